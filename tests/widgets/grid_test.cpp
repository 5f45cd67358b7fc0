#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <memory>

#include "widgets/grid_model.h"
#include "widgets/queue_grid.h"

namespace kibo::test {
namespace {

constexpr int kMany = 100'000;

/// Rows made up on the fly; counts how many different ones were read.
class GeneratedRows : public RowSource {
 public:
    explicit GeneratedRows(int count, int firstId = 1) : count_(count), firstId_(firstId) {}
    int rowCount() const override { return count_; }
    QString text(int row, int column) const override {
        ++reads;
        return (column == 6 ? QString() : QStringLiteral("text\n")) + QString::number(firstId_ + row);
    }

    mutable int reads = 0;

 private:
    int count_;
    int firstId_;
};

/// The grid of a queue, on screen.
class GridTest : public testing::Test {
 protected:
    void show(const std::shared_ptr<const RowSource>& rows) {
        queue.setRows(rows);
        if (!grid) {
            grid = std::make_unique<QueueGrid>(queue, QList<int>{1, 1, 1, 1, 1, 1, 1}, 6, QString(), nullptr);
            grid->resize(900, 300);
            grid->show();
        }
        grid->refresh();
        QCoreApplication::processEvents();
    }
    QString shown(int row, int column) const { return grid->model()->index(row, column).data().toString(); }

    Grid queue{QStringList(7, QStringLiteral("column"))};
    std::unique_ptr<QueueGrid> grid;
};

TEST_F(GridTest, aReloadOfTheSameRowsChangesNothingAndOtherRowsKeepSelectionAndPlace) {
    auto rows = std::make_shared<GeneratedRows>(kMany);
    show(rows);
    EXPECT_LT(rows->reads, 1000) << "more than the rows on the screen";
    grid->scrollTo(grid->model()->index(5000, 0), QAbstractItemView::PositionAtTop);
    grid->selectRow(5003);
    QCoreApplication::processEvents();
    const auto selected = [this] { return grid->selectionModel()->selectedRows().value(0).row(); };
    const int scroll = grid->verticalScrollBar()->value();
    const QSignalSpy changed(grid->model(), &QAbstractItemModel::dataChanged);
    const QSignalSpy reset(grid->model(), &QAbstractItemModel::modelReset);
    show(rows = std::make_shared<GeneratedRows>(kMany));
    EXPECT_EQ(changed.count() + reset.count(), 0);
    EXPECT_EQ(grid->verticalScrollBar()->value(), scroll);
    EXPECT_EQ(selected(), 5003);
    EXPECT_LT(rows->reads, 2000);
    const int reads = rows->reads;
    grid->refresh();
    EXPECT_EQ(rows->reads, reads) << "an unchanged grid is not even looked at";

    show(std::make_shared<GeneratedRows>(kMany - 1, 3));  // two sent, one queued
    EXPECT_EQ(grid->model()->rowCount(), kMany - 1);
    EXPECT_EQ(shown(0, 6), QStringLiteral("3"));
    EXPECT_EQ(shown(kMany - 2, 6), QString::number(kMany + 1));
    EXPECT_EQ(shown(selected(), 6), QStringLiteral("5004"));
    EXPECT_EQ(grid->verticalScrollBar()->value(), scroll - 2);
}

TEST_F(GridTest, showsChangedGrownAndEmptiedQueues) {
    for (const auto& [count, firstId] : {std::pair(3, 1), std::pair(1, 9), std::pair(5, 1), std::pair(0, 1)}) {
        show(std::make_shared<GeneratedRows>(count, firstId));
        ASSERT_EQ(grid->model()->rowCount(), count);
        for (int row = 0; row < count; ++row) EXPECT_EQ(shown(row, 6), QString::number(firstId + row));
    }
}

TEST_F(GridTest, aSortedAndSearchedListNamesItsRowsByTheirKeys) {
    show(std::make_shared<GeneratedRows>(kMany));
    grid->setFilter(QStringLiteral("TEXT\n1999"));
    EXPECT_EQ(grid->model()->rowCount(), 11) << "of the rows that are looked at";
    grid->model()->sort(6, Qt::DescendingOrder);
    EXPECT_EQ(shown(0, 6), QStringLiteral("19999"));
    grid->selectRow(10);
    EXPECT_EQ(grid->selectedKeys(), std::vector<qint64>{1999}) << "numbers sort as numbers";
    show(std::make_shared<GeneratedRows>(kMany, 1990));
    EXPECT_EQ(grid->selectedKeys(), std::vector<qint64>{1999});
    grid->setFilter({});
    EXPECT_EQ(grid->model()->rowCount(), ArrangedRows::kMostSearched);
    grid->model()->sort(-1);
    EXPECT_EQ(grid->model()->rowCount(), kMany);
}

TEST(GridModelText, isOneShortLine) {
    EXPECT_EQ(GridModel::singleLine(QStringLiteral("a\r\nb\nc\rd\te\vf\u2028g")), QStringLiteral("a⏎b⏎c⏎d e⏎f⏎g"));
    const QString emoji = QStringLiteral("🎉");
    // The cut falls into the middle of the character's surrogate pair.
    const QString cut = GridModel::singleLine(QString(GridModel::kShownCharacters - 1, u'x') + emoji.repeated(40'000));
    EXPECT_EQ(cut, QString(GridModel::kShownCharacters - 1, u'x') + QStringLiteral("…"));
}

}  // namespace
}  // namespace kibo::test
