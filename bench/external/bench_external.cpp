// In-process costs of an external folder: the folder is named by
// $ORVO_EXTERNAL_BENCH_DIR (run.sh copies the tldr pages there).
#include "library/ORVExternalListDataItem.h"
#include "library/ORVExternalTree.h"
#include "platform/SCEvents.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

QString benchDir() { return qEnvironmentVariable("ORVO_EXTERNAL_BENCH_DIR"); }

void collect(const ORVExternalCategoryItem &item, QStringList &out)
{
    out << item.fullPath;
    for (const auto &c : item.children)
        collect(*c, out);
}

void BM_BuildTree(benchmark::State &state)
{
    for (auto _ : state) {
        auto tree = ORVExternalTree::buildFolderItem(benchDir(), QStringLiteral("bench"));
        benchmark::DoNotOptimize(tree);
    }
}
BENCHMARK(BM_BuildTree)->Unit(benchmark::kMillisecond);

void BM_FileRows(benchmark::State &state)
{
    const bool withContent = state.range(0);
    QStringList folders;
    collect(*ORVExternalTree::buildFolderItem(benchDir(), QStringLiteral("bench")), folders);
    qint64 rows = 0;
    for (auto _ : state) {
        for (const QString &f : std::as_const(folders))
            rows += ORVExternalListDataItem::listDataItemsInFolder(f, 3, withContent).size();
    }
    state.counters["rows/s"] = benchmark::Counter(double(rows), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_FileRows)->Arg(0)->Arg(1)->ArgNames({"content"})->Unit(benchmark::kMillisecond);

void BM_StartWatching(benchmark::State &state)
{
    qint64 folders = 0;
    for (auto _ : state) {
        SCEvents stream;
        stream.startWatchingPath(benchDir());
        folders = stream.watchedFolderCount();
    }
    state.counters["folders"] = double(folders);
}
BENCHMARK(BM_StartWatching)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (benchDir().isEmpty()) {
        std::fputs("set ORVO_EXTERNAL_BENCH_DIR to a folder of Markdown files\n", stderr);
        return 2;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
