#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <memory>
#include <numeric>

#include "widgets/grid_model.h"
#include "widgets/queue_grid.h"
#include "widgets/row_reading.h"

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
            grid = std::make_unique<QueueGrid>(queue, 2, 6, QString(), nullptr);
            grid->resize(900, 300);
            grid->show();
        }
        grid->refresh();
        QCoreApplication::processEvents();
    }
    std::vector<qint64> selectedKeys() const {
        std::vector<qint64> keys;
        for (const int row : grid->selectedRows()) keys.push_back(grid->key(row));
        return keys;
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

TEST_F(GridTest, sortsAndSearchesManyRowsInPiecesAndNamesThemByTheirKeys) {
    show(std::make_shared<GeneratedRows>(kMany));
    grid->setFilter(QStringLiteral("TEXT\n1999"));
    QTRY_COMPARE(grid->model()->rowCount(), 11);
    const auto clickHeader = [this] {
        QHeaderView* header = grid->horizontalHeader();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          QPoint(header->sectionViewportPosition(6) + 8, header->height() / 2));
    };
    clickHeader();
    clickHeader();
    QTRY_COMPARE(shown(0, 6), QStringLiteral("19999"));
    grid->selectRow(10);
    EXPECT_EQ(selectedKeys(), std::vector<qint64>{1999}) << "numbers sort as numbers";
    show(std::make_shared<GeneratedRows>(kMany, 1990));
    QTRY_COMPARE(grid->model()->rowCount(), 11);
    EXPECT_EQ(selectedKeys(), std::vector<qint64>{1999});

    QElapsedTimer time;
    qint64 longest = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] { longest = qMax(longest, time.restart()); });
    time.start();
    tick.start(0);
    grid->setFilter({});
    QTRY_COMPARE(grid->model()->rowCount(), kMany);
    EXPECT_EQ(shown(0, 6), QString::number(kMany + 1989));
    EXPECT_LT(longest, 300) << "nobody waits for all of it";
    clickHeader();
    EXPECT_EQ(shown(0, 6), QStringLiteral("1990")) << "the third click gives the order of the store back";
}

TEST_F(GridTest, whatIsSelectedStaysSelectedWhereverAReloadMovesIt) {
    const auto rows = [this](const QString& ids) {
        auto list = std::make_shared<ListRows>();
        for (const QString& id : ids.split(u' ')) list->append(QStringList(6, QStringLiteral("x")) + QStringList(id));
        show(list);
    };
    rows(QStringLiteral("1 2 3 7 8"));
    grid->selectRow(1);
    grid->selectionModel()->select(grid->model()->index(4, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    EXPECT_EQ(selectedKeys(), (std::vector<qint64>{2, 8}));
    rows(QStringLiteral("1 2 3 4 5 7 8"));
    EXPECT_EQ(selectedKeys(), (std::vector<qint64>{2, 8})) << "two more before the last ones";
    rows(QStringLiteral("2 3 5 7 8"));
    EXPECT_EQ(selectedKeys(), (std::vector<qint64>{2, 8})) << "one from the head, one from the middle";
    rows(QStringLiteral("2 3 5 7 9"));
    EXPECT_EQ(selectedKeys(), std::vector<qint64>{2}) << "what has gone hands its place to nobody";
}

TEST_F(GridTest, columnsAreAsWideAsTheyWantAndTheLongOnesShareWhatIsLeft) {
    queue.header = QStringList{QStringLiteral("a"), QStringLiteral("wa_no"),         QStringLiteral("wa_text"),
                               QStringLiteral("d"), QStringLiteral("a long header"), QStringLiteral("f"),
                               QStringLiteral("id")};
    auto rows = std::make_shared<ListRows>();
    rows->append({QStringLiteral("0"), QStringLiteral("6281234567890"), QString(900, u'w'), QString(),
                  QString(900, u'w'), QString(), QStringLiteral("17")});
    show(rows);
    const auto cut = [this](int column) {
        return grid->columnWidth(column) <
               std::max(grid->horizontalHeader()->sectionSizeHint(column),
                        std::min(static_cast<QAbstractItemView*>(grid.get())->sizeHintForColumn(column), 140));
    };
    const auto total = [this] {
        int width = 0;
        for (int column = 0; column < 7; ++column) width += grid->columnWidth(column);
        return width;
    };
    QTRY_COMPARE(total(), grid->viewport()->width());
    for (int column = 0; column < 7; ++column) EXPECT_FALSE(cut(column)) << column;
    EXPECT_GT(grid->columnWidth(2), grid->columnWidth(4) * 3 / 2) << "the text most of all";

    grid->horizontalHeader()->resizeSection(1, 60);
    EXPECT_EQ(total(), grid->viewport()->width()) << "the others take what it leaves";
    const QString own = grid->ownWidths();
    EXPECT_EQ(own, QStringLiteral("0,60,0,0,0,0,0"));
    grid->horizontalHeader()->resizeSection(2, 90);
    grid->horizontalHeader()->resizeSection(4, 90);
    EXPECT_EQ(total(), grid->viewport()->width());
    QueueGrid next(queue, 2, 6, QString(), nullptr);
    next.setOwnWidths(own);
    EXPECT_EQ(next.columnWidth(1), 60);
    next.setOwnWidths(QStringLiteral("nonsense"));
    EXPECT_EQ(next.ownWidths(), own);
}

TEST(RowReadingTest, copiesManyRowsInPiecesWholeOrNotAtAll) {
    QClipboard& clipboard = *QGuiApplication::clipboard();
    clipboard.setText(QStringLiteral("before"));
    RowReading copy(nullptr);
    int portions = 0;
    QList<RowReading::End> ends;
    const auto begin = [&](int rows, std::vector<int> chosen = {}) {
        if (chosen.empty()) {
            chosen.resize(static_cast<size_t>(rows));
            std::iota(chosen.begin(), chosen.end(), 0);
        }
        copyRows(
            copy, {std::make_shared<GeneratedRows>(rows), std::move(chosen)}, 2, [&](int, int) { ++portions; },
            [&](RowReading::End end) { ends.append(end); });
    };
    begin(kMany);
    EXPECT_TRUE(copy.isRunning());
    copy.stop();
    EXPECT_EQ(clipboard.text(), QStringLiteral("before"));
    begin(kMany);
    QTRY_COMPARE(ends.size(), 2);
    EXPECT_EQ(clipboard.text().count(u'\t'), kMany);
    EXPECT_GT(portions, 2);
    begin(3, {2, 0});
    EXPECT_EQ(clipboard.text(), QStringLiteral("\"text\n3\"\t\"text\n3\"\n\"text\n1\"\t\"text\n1\"\n"));
    EXPECT_EQ(ends, (QList{RowReading::End::Stopped, RowReading::End::Done, RowReading::End::Done}));
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
