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
const QTreeWidgetItem* StationOf(const QTreeWidgetItem* node);

// REQUIRES: a channel's node.
std::int16_t ChannelOf(const QTreeWidgetItem* node);

// Null if the tree has no such station.
QTreeWidgetItem* FindStation(const QTreeWidget& tree, const QString& path);

// A station at the end of the tree, with the channels of StationInfo and ChannelInfo.
QTreeWidgetItem* AddStationNode(QTreeWidget& tree, const QString& path, const QString& title);

}  // namespace rillbook
