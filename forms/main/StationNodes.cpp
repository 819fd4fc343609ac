#include "forms/main/StationNodes.h"

#include <QTreeWidget>

#include "forms/main/Icons.h"
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

const QTreeWidgetItem* StationOf(const QTreeWidgetItem* node) {
    return node->parent() == nullptr ? node : node->parent();
}

std::int16_t ChannelOf(const QTreeWidgetItem* node) {
    // Behind the station's key: a path may end in a digit itself.
    return NodeKey(node).sliced(NodeKey(node->parent()).size()).toShort();
}

QTreeWidgetItem* FindStation(const QTreeWidget& tree, const QString& path) {
    for (int i = 0; i < tree.topLevelItemCount(); ++i) {
        if (NodeKey(tree.topLevelItem(i)) == path) {
            return tree.topLevelItem(i);
        }
    }
    return nullptr;
}

QTreeWidgetItem* AddStationNode(QTreeWidget& tree, const QString& path, const QString& title) {
    auto* station = new QTreeWidgetItem(&tree);
    SetNode(station, path, title, Picture::Station);
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        const ChannelInfoData& channel = ChannelInfo[chan];
        const QString number = QString::number(chan);
        SetNode(new QTreeWidgetItem(station), path + number,
                number + QStringLiteral(": ") + channel.RecSta + QStringLiteral(" - ") +
                    channel.RecDesc + QStringLiteral(" (") + channel.RecLabel + QLatin1Char(')'),
                Picture::Channel);
    }
    return station;
}

}  // namespace rillbook
