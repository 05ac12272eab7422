// A group's list of children keeps each child's mark beside it through every
// insertion, removal, reordering and growth, and a node's mark follows it
// wherever it sits.
#include "TestRegistry.h"

#include "model/ChildList.h"
#include "model/PListNode.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Entry = std::pair<PListNodePtr, quint64>;

bool sameAs(const ChildList &list, const std::vector<Entry> &expected)
{
    if (list.size() != static_cast<qsizetype>(expected.size()))
        return false;
    for (qsizetype i = 0; i < list.size(); ++i) {
        const Entry &entry = expected[static_cast<size_t>(i)];
        if (list.at(i) != entry.first || list.marks()[i] != entry.second)
            return false;
    }
    return true;
}

} // namespace

class ChildListTest : public QObject {
    Q_OBJECT
private slots:
    // Random insertions (front, middle, end), removals and mark changes, checked
    // after each step against a plain vector of pairs.
    void followsAPlainList_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<int>("steps");
        QTest::newRow("short") << 7u << 40;
        QTest::newRow("long, through many growths") << 2026u << 3000;
    }

    void followsAPlainList()
    {
        QFETCH(quint32, seed);
        QFETCH(int, steps);
        QRandomGenerator random(seed);
        std::vector<PListNodePtr> pool;
        for (int i = 0; i < 12; ++i)
            pool.push_back(PListNode::initWithName(u"n%1"_s.arg(i), PropertyList(u"v"_s)));
        ChildList list;
        std::vector<Entry> expected;
        for (int step = 0; step < steps; ++step) {
            const int size = static_cast<int>(expected.size());
            const int kind = random.bounded(11);
            if (kind < 6 || size == 0) {
                const int at = random.bounded(size + 1);
                const Entry entry{pool[random.bounded(static_cast<int>(pool.size()))], random.generate64()};
                list.insert(at, entry.first, entry.second);
                expected.insert(expected.begin() + at, entry);
            } else if (kind < 9) {
                const int at = random.bounded(size);
                list.removeAt(at);
                expected.erase(expected.begin() + at);
            } else if (kind == 10) {
                // A shuffle: each mark goes where its child goes.
                std::vector<qsizetype> order(expected.size());
                std::iota(order.begin(), order.end(), 0);
                std::shuffle(order.begin(), order.end(), random);
                std::vector<Entry> shuffled;
                for (const qsizetype from : order)
                    shuffled.push_back(expected[static_cast<size_t>(from)]);
                list.reorder(order.data());
                expected = shuffled;
            } else {
                // A node may sit in the list more than once: every place changes.
                const PListNodePtr &node = pool[random.bounded(static_cast<int>(pool.size()))];
                const quint64 mark = random.generate64();
                list.setMarkOf(node.get(), mark);
                for (Entry &entry : expected) {
                    if (entry.first == node)
                        entry.second = mark;
                }
            }
            QVERIFY2(sameAs(list, expected), qPrintable(u"after step %1"_s.arg(step)));
        }
        ChildList moved(std::move(list));
        QVERIFY(sameAs(moved, expected));
        QVERIFY(list.isEmpty());
        moved.clear(nullptr);
        QVERIFY(moved.isEmpty() && moved.marks() == nullptr);
    }

    // The list holds its children alive, and releases them when it is cleared.
    void ownsItsChildren()
    {
        std::weak_ptr<PListNode> watched;
        {
            ChildList list;
            PListNodePtr child = PListNode::initWithName(u"k"_s, PropertyList(u"v"_s));
            watched = child;
            list.append(std::move(child), 0);
            list.append(list.at(0), 0);
            list.removeAt(1);
            QVERIFY(!watched.expired());
        }
        QVERIFY(watched.expired());
    }
};

ORVANE_TEST(ChildListTest)
#include "ChildListTest.moc"
