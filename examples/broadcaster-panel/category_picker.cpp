#include "category_picker.h"

#include <QLabel>
#include <QListWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <string>
#include <vector>

#include "panel_service.h"

namespace {

QString text(const std::u16string& value) {
    return QString::fromStdU16String(value);
}

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

struct Categories {
    int32_t code = 0;
    std::string message;
    std::vector<CategoryNode> tree;
    std::vector<CategoryNode> suggestions;
};

struct CategoryAnswer {
    int32_t code = 0;
    std::string message;
    RoomSummary room;  // as the platform stored it
};

struct Tags {
    int32_t code = 0;
    std::string message;
    std::string groupName;
    bool hasTags = false;
    std::vector<CategoryNode> tags;
};

// One node and its children. A first-level node only groups; a second-level one is a choice
// when it has no third level under it, and a third-level one is a choice under its parent.
void addNode(QTreeWidgetItem* parent, const CategoryNode& node, int depth, int32_t cid2) {
    auto* item = new QTreeWidgetItem(parent, {text(node.name)});
    const bool leaf = node.children.empty();
    if (depth == 2) {
        cid2 = node.id;
        item->setData(0, CategoryPicker::kCid2Role, node.id);
        item->setData(0, CategoryPicker::kCid3Role, 0);
    } else if (depth == 3) {
        item->setData(0, CategoryPicker::kCid2Role, cid2);
        item->setData(0, CategoryPicker::kCid3Role, node.id);
    }
    if (depth == 1 || !leaf) {
        item->setFlags(item->flags() & ~Qt::ItemIsSelectable);
    }
    for (const CategoryNode& child : node.children) {
        addNode(item, child, depth + 1, cid2);
    }
}

RoomSummary refreshedRoom(ILiveencoderNetService& service) {
    // The room information is where the platform tells what it stored.
    service.refreshRoomInfo();
    RoomSummary room;
    service.getRoomRecord(room);
    return room;
}

}  // namespace

CategoryPicker::CategoryPicker(PanelService& service, QWidget* parent)
    : QWidget(parent),
      service_(service),
      categories_(new QTreeWidget),
      tagGroup_(new QLabel),
      tags_(new QListWidget) {
    categories_->setHeaderHidden(true);
    categories_->setMinimumHeight(160);
    tags_->setFlow(QListView::LeftToRight);
    tags_->setWrapping(true);
    tags_->setMaximumHeight(56);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(categories_);
    layout->addWidget(tagGroup_);
    layout->addWidget(tags_);
    connect(categories_, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* item) { chooseCategory(item); });
    connect(tags_, &QListWidget::itemSelectionChanged, this, &CategoryPicker::chooseTag);
    refreshEnabled();
}

void CategoryPicker::load() {
    loaded_ = true;
    categoryPending_ = true;
    refreshEnabled();
    service_.call(
        this,
        [](ILiveencoderNetService& service) {
            Categories answer;
            answer.code = service.getClassifyInfo(answer.tree, answer.suggestions, answer.message);
            return answer;
        },
        [this](const Categories& answer) {
            categoryPending_ = false;
            refreshEnabled();
            if (answer.code != 0) {
                emit failed(QStringLiteral("getClassifyInfo"), answer.code, text(answer.message));
                return;
            }
            const QSignalBlocker quiet(categories_);
            categories_->clear();
            if (!answer.suggestions.empty()) {
                auto* suggested = new QTreeWidgetItem(categories_, {QStringLiteral("Suggested")});
                suggested->setFlags(suggested->flags() & ~Qt::ItemIsSelectable);
                for (const CategoryNode& group : answer.suggestions) {
                    addNode(suggested, group, 1, 0);
                }
                suggested->setExpanded(true);
            }
            for (const CategoryNode& top : answer.tree) {
                auto* item = new QTreeWidgetItem(categories_, {text(top.name)});
                item->setFlags(item->flags() & ~Qt::ItemIsSelectable);
                for (const CategoryNode& second : top.children) {
                    addNode(item, second, 2, 0);
                }
            }
        });
}

void CategoryPicker::chooseCategory(QTreeWidgetItem* item) {
    if (item == nullptr || !(item->flags() & Qt::ItemIsSelectable) || categoryPending_) {
        return;
    }
    const int32_t cid2 = item->data(0, kCid2Role).toInt();
    const int32_t cid3 = item->data(0, kCid3Role).toInt();
    categoryPending_ = true;
    refreshEnabled();
    service_.call(
        this,
        [cid2, cid3](ILiveencoderNetService& service) {
            CategoryAnswer answer;
            answer.code = service.setLiveClassify(cid2, cid3, answer.message);
            if (answer.code == 0) {
                answer.room = refreshedRoom(service);
            }
            return answer;
        },
        [this](const CategoryAnswer& answer) {
            categoryPending_ = false;
            refreshEnabled();
            if (answer.code != 0) {
                emit failed(QStringLiteral("setLiveClassify"), answer.code, text(answer.message));
                return;
            }
            emit categoryChanged(text(answer.room.gameName), text(answer.room.childName));
            emit info(QStringLiteral("Category set: %1 / %2")
                          .arg(text(answer.room.gameName), text(answer.room.childName)));
            loadTags();
        });
}

void CategoryPicker::loadTags() {
    tagPending_ = true;
    chosenTag_ = 0;
    refreshEnabled();
    service_.call(
        this,
        [](ILiveencoderNetService& service) {
            Tags answer;
            int32_t hasIcon = 0;
            answer.code = service.getLiveTags(answer.hasTags, hasIcon, answer.groupName,
                                              answer.tags, answer.message);
            return answer;
        },
        [this](const Tags& answer) {
            tagPending_ = false;
            refreshEnabled();
            const QSignalBlocker quiet(tags_);
            tags_->clear();
            if (answer.code != 0) {
                emit failed(QStringLiteral("getLiveTags"), answer.code, text(answer.message));
                return;
            }
            tagGroup_->setText(answer.hasTags
                                   ? QStringLiteral("Tags: %1").arg(text(answer.groupName))
                                   : QStringLiteral("No tags for this category"));
            for (const CategoryNode& tag : answer.tags) {
                auto* item = new QListWidgetItem(text(tag.name), tags_);
                item->setData(kTagRole, tag.id);
            }
        });
}

void CategoryPicker::chooseTag() {
    const QList<QListWidgetItem*> picked = tags_->selectedItems();
    if (picked.isEmpty() || tagPending_) {
        return;
    }
    const int32_t tid = picked.front()->data(kTagRole).toInt();
    const QString name = picked.front()->text();
    tagPending_ = true;
    refreshEnabled();
    service_.call(
        this,
        [tid](ILiveencoderNetService& service) {
            CategoryAnswer answer;
            answer.code = service.setGameTag(tid, answer.message);
            return answer;
        },
        [this, tid, name](const CategoryAnswer& answer) {
            tagPending_ = false;
            refreshEnabled();
            if (answer.code != 0) {
                emit failed(QStringLiteral("setGameTag"), answer.code, text(answer.message));
                return;
            }
            chosenTag_ = tid;
            emit info(QStringLiteral("Tag set: %1").arg(name));
        });
}

void CategoryPicker::refreshEnabled() {
    categories_->setEnabled(loaded_ && !categoryPending_);
    tags_->setEnabled(loaded_ && !tagPending_ && !categoryPending_);
}
