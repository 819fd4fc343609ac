#include "forms/main/StationNodes.h"

#include <QTreeWidget>
#include <algorithm>

#include "forms/main/Icons.h"
#include "platform/desktop/SameFile.h"
#include "store/FormStuff.h"

namespace rillbook {

namespace {

constexpr int kKeyRole = Qt::UserRole;

void SetNode(QTreeWidgetItem* node, const QString& key, const QString& text, Picture picture) {
    node->setData(0, kKeyRole, key);
    node->setText(0, text);
    node->setIcon(0, PictureIcon(picture));
}

}  // namespace

QString NodeKey(const QTreeWidgetItem* node) {
    return node->data(0, kKeyRole).toString();
}

QTreeWidgetItem* StationOf(QTreeWidgetItem* node) {
    return node->parent() == nullptr ? node : node->parent();
}

std::int16_t ChannelOf(const QTreeWidgetItem* node) {
    // Behind the station's key: a path may end in a digit itself.
    return NodeKey(node).sliced(NodeKey(node->parent()).size()).toShort();
}

QTreeWidgetItem* FindStation(const QTreeWidget& tree, const QString& path) {
    QTreeWidgetItem* sameFile = nullptr;
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        QTreeWidgetItem* station = tree.topLevelItem(i);
        if (NodeKey(station) == path) {
            return station;
        }
        if (sameFile == nullptr && IsSameFile(NodeKey(station), path)) {
            sameFile = station;
        }
    }
    return sameFile;
}

void FillStationNode(QTreeWidgetItem* station, const QString& path, const QString& title) {
    SetNode(station, path, title, Picture::Station);
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        if (station->childCount() < chan) {
            new QTreeWidgetItem(station);
        }
        const ChannelInfoData& channel = ChannelInfo[chan];
        const QString number = QString::number(chan);
        SetNode(station->child(chan - 1), path + number,
                number + QStringLiteral(": ") + channel.RecSta + QStringLiteral(" - ") +
                    channel.RecDesc + QStringLiteral(" (") + channel.RecLabel + QLatin1Char(')'),
                Picture::Channel);
    }
    while (station->childCount() > std::max<int>(StationInfo.Channels, 0)) {
        delete station->child(station->childCount() - 1);
    }
}

}  // namespace rillbook
