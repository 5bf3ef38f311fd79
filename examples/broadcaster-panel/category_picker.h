#pragma once

#include <QString>
#include <QWidget>
#include <cstdint>

class PanelService;
class QLabel;
class QListWidget;
class QTreeWidget;
class QTreeWidgetItem;

// The category tree (first, second and third level, with the platform's suggestions on top) and
// the tags of the chosen category. Choosing a category or a tag sets it on the platform.
class CategoryPicker : public QWidget {
    Q_OBJECT
public:
    // Item data: the second- and third-level ids of a category, the id of a tag.
    static constexpr int kCid2Role = Qt::UserRole;
    static constexpr int kCid3Role = Qt::UserRole + 1;
    static constexpr int kTagRole = Qt::UserRole;

    explicit CategoryPicker(PanelService& service, QWidget* parent = nullptr);

    void load();

    QTreeWidget* categories() const { return categories_; }
    QListWidget* tags() const { return tags_; }
    int32_t chosenTag() const { return chosenTag_; }

signals:
    void failed(const QString& operation, int code, const QString& message);
    void info(const QString& text);
    // The platform stored a new category; these are its names as the room now has them.
    void categoryChanged(const QString& game, const QString& child);

private:
    void chooseCategory(QTreeWidgetItem* item);
    void loadTags();
    void chooseTag();
    void refreshEnabled();

    PanelService& service_;
    QTreeWidget* categories_;
    QLabel* tagGroup_;
    QListWidget* tags_;
    bool loaded_ = false;
    bool categoryPending_ = false;
    bool tagPending_ = false;
    int32_t chosenTag_ = 0;
};
