// The object graph of a keyed archive on its own: references, classes and hints, and
// the guards against archives that refer to themselves or nest without end.

#include "core/document/keyedarchive/archiveobjectgraph.h"
#include "support/archivebuilder.h"

#include <QTest>

using namespace lomir;
using namespace lomir::archive;
using lomir::testing::ArchiveBuilder;

namespace {

const char* damagedPrefix()
{
    return "The archive is damaged";
}

} // namespace

class TestArchiveObjectGraph : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theRootAndItsClass()
    {
        ArchiveBuilder archive;
        const quint64 root = archive.addAttributedString("Honey", {});
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(root));
        QVERIFY(graph);
        QCOMPARE(graph->root().uid, root);
        const Result<ClassInfo> info = graph->classOf(graph->root());
        QVERIFY(info);
        QCOMPARE(info->name, QStringLiteral("NSAttributedString"));
        QVERIFY(info->inherits("NSObject"));
        QVERIFY(!info->inherits("NSColor"));
        const Result<QString> text =
            graph->readString(plist_dict_get_item(graph->root().node, "NSString"), "the text");
        QVERIFY(text);
        QCOMPARE(*text, QStringLiteral("Honey"));
    }

    void aNilRoot()
    {
        ArchiveBuilder archive;
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(0));
        QVERIFY(graph);
        QVERIFY(graph->root().isNil());
    }

    void aReferenceOutsideTheTableIsDamage()
    {
        ArchiveBuilder archive;
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(7));
        QVERIFY(!graph);
        QVERIFY2(graph.error().message.startsWith(QLatin1String(damagedPrefix())),
                 qPrintable(graph.error().message));
        QVERIFY(graph.error().message.contains(QStringLiteral("not in its object table")));
    }

    void hintsStandInForAnUnknownClass()
    {
        ArchiveBuilder archive;
        const quint64 uiColor =
            archive.addClass("UIColor", {"UIColor", "NSObject"}, {"NSSomethingElse", "NSColor"});
        const quint64 root = archive.add(ArchiveBuilder::object(uiColor));
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(root));
        QVERIFY(graph);
        const Result<ClassInfo> info = graph->classOf(graph->root());
        QVERIFY(info);
        QCOMPARE(info->name, QStringLiteral("UIColor"));
        QVERIFY(info->inherits("NSColor"));
        QVERIFY(info->readable());
        QVERIFY(graph->expectClass(graph->root(), "NSColor", "a color"));
    }

    void hintsAreNotConsultedForAKnownClass()
    {
        ArchiveBuilder archive;
        const quint64 font = archive.addClass("NSFont", {"NSFont", "NSObject"}, {"NSColor"});
        const quint64 root = archive.add(ArchiveBuilder::object(font));
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(root));
        QVERIFY(graph);
        const Result<ClassInfo> info = graph->classOf(graph->root());
        QVERIFY(info);
        QVERIFY(!info->inherits("NSColor"));
    }

    void aClassNobodyReadsIsNotDamage()
    {
        ArchiveBuilder archive;
        const quint64 mystery = archive.addClass("XYWidget", {"XYWidget", "NSObject"});
        const quint64 root = archive.add(ArchiveBuilder::object(mystery));
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(root));
        QVERIFY(graph);
        const Status checked = graph->expectClass(graph->root(), "NSColor", "a color");
        QVERIFY(!checked);
        QCOMPARE(checked.error().message,
                 QStringLiteral("The archive holds an object of class “XYWidget”, which Lomir "
                                "cannot read."));
    }

    void anObjectInsideItselfIsRefused()
    {
        ArchiveBuilder archive;
        const quint64 root = archive.addAttributedString("x", {});
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(root));
        QVERIFY(graph);
        QVERIFY(graph->enter(graph->root()));
        const Status again = graph->enter(graph->root());
        QVERIFY(!again);
        QVERIFY(again.error().message.contains(QStringLiteral("contains itself")));
        graph->leave();
        // Once left, the object may be entered again (a dictionary shared by two runs).
        QVERIFY(graph->enter(graph->root()));
        graph->leave();
    }

    void nestingHasALimit()
    {
        // Distinct objects each inside the one before: the depth guard stops the chain
        // long before the stack could run out.
        ArchiveBuilder archive;
        const quint64 stringClass = archive.addClass("NSString", {"NSString", "NSObject"});
        std::vector<quint64> objects;
        for (int i = 0; i < 40; ++i)
            objects.push_back(archive.add(ArchiveBuilder::object(stringClass)));
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(archive.finish(objects[0]));
        QVERIFY(graph);
        int entered = 0;
        Status status = Done{};
        for (const quint64 uid : objects) {
            const PlistPtr reference(plist_new_uid(uid));
            const Result<Object> object = graph->resolve(reference.get());
            QVERIFY(object);
            status = graph->enter(*object);
            if (!status)
                break;
            ++entered;
        }
        QVERIFY(!status);
        QVERIFY(status.error().message.contains(QStringLiteral("nested too deeply")));
        QVERIFY(entered > 4);
        QVERIFY(entered < 40);
    }
};

QTEST_MAIN(TestArchiveObjectGraph)
#include "tst_archiveobjectgraph.moc"
