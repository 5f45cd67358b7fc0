#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>

#include "main_window/grid_model.h"
#include "main_window/queue_grid.h"
#include "window_fixture.h"

namespace kibo::test {
namespace {

constexpr int kMany = 100'000;

class GridTest : public WindowFixture {
 protected:
    QTableView* show(int count) {
        const auto rows = std::make_shared<GeneratedRows>(count);
        state.ms_out.setRows(rows);
        build();
        EXPECT_LT(rows->reads, 1000) << "more than the rows on the screen";
        return find<QTableView>("ms_out");
    }
    QString shown(QTableView* grid, int row, int column) { return grid->model()->index(row, column).data().toString(); }
};

TEST_F(GridTest, aReloadOfTheSameRowsChangesNothingOnTheScreen) {
    QTableView* grid = show(kMany);
    grid->selectRow(50'000);
    grid->scrollTo(grid->model()->index(50'000, 0));
    QCoreApplication::processEvents();
    const int scroll = grid->verticalScrollBar()->value();
    const QSignalSpy changed(grid->model(), &QAbstractItemModel::dataChanged);
    const QSignalSpy reset(grid->model(), &QAbstractItemModel::modelReset);
    auto again = std::make_shared<GeneratedRows>(kMany);
    state.ms_out.setRows(again);
    window->showState();
    EXPECT_EQ(changed.count() + reset.count(), 0);
    EXPECT_EQ(grid->verticalScrollBar()->value(), scroll);
    EXPECT_EQ(grid->selectionModel()->selectedRows().value(0).row(), 50'000);
    EXPECT_LT(again->reads, 2000);
    const int reads = again->reads;
    window->showState();
    EXPECT_EQ(again->reads, reads) << "an unchanged grid is not even looked at";
}

TEST_F(GridTest, keepsSelectionAndPlaceWithTheirRowsWhenTheHeadIsSent) {
    QTableView* grid = show(kMany);
    grid->scrollTo(grid->model()->index(5000, 0), QAbstractItemView::PositionAtTop);
    grid->selectRow(5003);
    QCoreApplication::processEvents();
    const int scroll = grid->verticalScrollBar()->value();
    state.ms_out.setRows(std::make_shared<GeneratedRows>(kMany - 1, 3));  // two sent, one queued
    window->showState();
    QCoreApplication::processEvents();
    EXPECT_EQ(grid->model()->rowCount(), kMany - 1);
    EXPECT_EQ(shown(grid, 0, 6), QStringLiteral("3"));
    EXPECT_EQ(shown(grid, kMany - 2, 6), QString::number(kMany + 1));
    const int selected = grid->selectionModel()->selectedRows().value(0).row();
    EXPECT_EQ(shown(grid, selected, 6), QStringLiteral("5004"));
    EXPECT_EQ(grid->verticalScrollBar()->value(), scroll - 2);
}

TEST_F(GridTest, showsChangedGrownAndEmptiedQueues) {
    QTableView* grid = show(3);
    EXPECT_EQ(shown(grid, 0, 6), QStringLiteral("1"));
    auto changed = std::make_shared<ListRows>();
    changed->append(
        {QStringLiteral("0"), QStringLiteral("62899"), QStringLiteral("other"), {}, {}, {}, QStringLiteral("9")});
    state.ms_out.setRows(changed);
    window->showState();
    EXPECT_EQ(grid->model()->rowCount(), 1);
    EXPECT_EQ(shown(grid, 0, 2), QStringLiteral("other"));
    state.ms_out.setRows(std::make_shared<GeneratedRows>(5));
    window->showState();
    EXPECT_EQ(shown(grid, 4, 6), QStringLiteral("5"));
    state.ms_out.setRows(std::make_shared<ListRows>());
    window->showState();
    EXPECT_EQ(grid->model()->rowCount(), 0);
}

TEST(GridModelText, isOneShortLine) {
    EXPECT_EQ(GridModel::singleLine(QStringLiteral("a\r\nb\nc\rd\te")), QStringLiteral("a⏎b⏎c⏎d e"));
    const QString emoji = QStringLiteral("🎉");
    // The cut falls into the middle of the character's surrogate pair.
    const QString cut = GridModel::singleLine(QString(GridModel::kShownCharacters - 1, u'x') + emoji.repeated(40'000));
    EXPECT_EQ(cut, QString(GridModel::kShownCharacters - 1, u'x') + QStringLiteral("…"));
}

}  // namespace
}  // namespace kibo::test
