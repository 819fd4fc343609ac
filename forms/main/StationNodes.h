#pragma once

#include <QString>
#include <cstdint>

class QTreeWidget;
class QTreeWidgetItem;

namespace rillbook {

// The nodes of the main window's tree. A root node is a station, its key the station's full path. A
// child is a channel, its key the station's followed by the channel's number.

QString NodeKey(const QTreeWidgetItem* node);

// The node itself if it is a station's.
QTreeWidgetItem* StationOf(QTreeWidgetItem* node);

// REQUIRES: a channel's node.
std::int16_t ChannelOf(const QTreeWidgetItem* node);

// The station with this path, or else one whose path leads to the same file; null if the tree has
// neither.
QTreeWidgetItem* FindStation(const QTreeWidget& tree, const QString& path);

// Makes a root node show a station with the channels of StationInfo and ChannelInfo. Channels that
// it has already keep their nodes.
void FillStationNode(QTreeWidgetItem* station, const QString& path, const QString& title);

}  // namespace rillbook
