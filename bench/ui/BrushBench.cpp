#include <benchmark/benchmark.h>
#include <tessel/ui/brush.h>

namespace {

/// A table with a number of colours, for the duration of a benchmark.
class Table {
public:
    explicit Table(int64_t entries) {
        for (int64_t i = 0; i < entries; ++i) m_last = m_brushes.Add(static_cast<unsigned long>(i));
    }
    ~Table() { m_brushes.RemoveAll(); }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    CBrush& Brushes() { return m_brushes; }
    int Last() const { return m_last; }

private:
    CBrush m_brushes;
    int m_last = -1;
};

void ByIndex(benchmark::State& state) {
    Table table(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(table.Brushes().GetBrush(table.Last()));
}

/// The last entry, which takes the longest to find.
void ByKey(benchmark::State& state) {
    Table table(state.range(0));
    const unsigned long key = table.Brushes().GetColor(table.Last());
    for (auto _ : state) benchmark::DoNotOptimize(table.Brushes().GetBrushIndex(key));
    if (table.Brushes().GetBrushIndex(key) != table.Last()) state.SkipWithError("the brush is not found");
}

void KnownColor(benchmark::State& state) {
    Table table(state.range(0));
    const unsigned long color = table.Brushes().GetColor(table.Last());
    for (auto _ : state) benchmark::DoNotOptimize(table.Brushes().Add(color));
    if (table.Brushes().Add(color) != table.Last()) state.SkipWithError("the colour was added again");
}

void KnownPaletteColor(benchmark::State& state) {
    CBrush brushes;
    const int index = brushes.Add(CI_RED);
    for (auto _ : state) benchmark::DoNotOptimize(brushes.Add(CI_RED));
    if (brushes.Add(CI_RED) != index) state.SkipWithError("the colour was added again");
    brushes.RemoveAll();
}

BENCHMARK(ByIndex)->Name("Brush by index, entries")->Arg(10)->Arg(1000)->UseRealTime();
BENCHMARK(ByKey)->Name("Brush by key, entries")->Arg(10)->Arg(1000)->UseRealTime();
BENCHMARK(KnownColor)->Name("Brush of a known colour, entries")->Arg(10)->Arg(1000)->UseRealTime();
BENCHMARK(KnownPaletteColor)->Name("Brush of a known palette colour")->UseRealTime();

} // namespace
