// Searching text with the library's string operations, beside Qt's QString
// when it is installed: 64 KiB of text with the sought phrase at its end.
#include <halvane/text/HVString.h>

#include <benchmark/benchmark.h>

#include <string>

#if defined(HALVANE_BENCH_WITH_QT)
#include <QString>
#endif

namespace {

constexpr size_t kTextUnits = 64 * 1024;

// 64 Ki UTF-16 units of plain ASCII or of accented Latin text, ending with
// the phrase that the searches look for in another letter case.
std::u16string haystack(bool accented) {
    std::u16string piece = accented ? u"Grüße aus Köln, déjà vu à Genève; " : u"The quick brown fox jumps over it. ";
    std::u16string ending = u"Needle in the Haystack";
    std::u16string text;
    while (text.size() + piece.size() + ending.size() <= kTextUnits) text += piece;
    text.append(kTextUnits - ending.size() - text.size(), u'.');
    return text + ending;
}

const char16_t kSought[] = u"nEEDLE IN THE hAYSTACK";

}  // namespace

static void BM_HVStringRangeOfStringCaseInsensitive(benchmark::State& state) {
    std::u16string units = haystack(state.range(0) != 0);
    HVString text(units.c_str());
    HVString sought(kSought);
    for (auto _ : state) {
        HVRange found = text.RangeOfStringWithOptions(sought, HVCaseInsensitiveSearch);
        benchmark::DoNotOptimize(found);
        if (found.Location() != kTextUnits - sought.Length()) state.SkipWithError("not found where expected");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(units.size() * 2));
}
BENCHMARK(BM_HVStringRangeOfStringCaseInsensitive)->Arg(0)->Arg(1)->ArgNames({"accented"});

static void BM_HVStringRangeOfStringLiteral(benchmark::State& state) {
    std::u16string units = haystack(state.range(0) != 0);
    HVString text(units.c_str());
    HVString sought(u"Needle in the Haystack");
    for (auto _ : state) {
        HVRange found = text.RangeOfString(sought);
        benchmark::DoNotOptimize(found);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(units.size() * 2));
}
BENCHMARK(BM_HVStringRangeOfStringLiteral)->Arg(0)->Arg(1)->ArgNames({"accented"});

#if defined(HALVANE_BENCH_WITH_QT)
static void BM_QStringIndexOfCaseInsensitive(benchmark::State& state) {
    std::u16string units = haystack(state.range(0) != 0);
    QString text = QString::fromUtf16(units.data(), int(units.size()));
    QString sought = QString::fromUtf16(kSought);
    for (auto _ : state) {
        int found = text.indexOf(sought, 0, Qt::CaseInsensitive);
        benchmark::DoNotOptimize(found);
        if (found != int(kTextUnits - size_t(sought.size()))) state.SkipWithError("not found where expected");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(units.size() * 2));
}
BENCHMARK(BM_QStringIndexOfCaseInsensitive)->Arg(0)->Arg(1)->ArgNames({"accented"});

static void BM_QStringIndexOfCaseSensitive(benchmark::State& state) {
    std::u16string units = haystack(state.range(0) != 0);
    QString text = QString::fromUtf16(units.data(), int(units.size()));
    QString sought = QString::fromUtf16(u"Needle in the Haystack");
    for (auto _ : state) {
        int found = text.indexOf(sought, 0, Qt::CaseSensitive);
        benchmark::DoNotOptimize(found);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(units.size() * 2));
}
BENCHMARK(BM_QStringIndexOfCaseSensitive)->Arg(0)->Arg(1)->ArgNames({"accented"});
#endif
