// Strings and data buffers of the library, beside the peers an application
// would otherwise use: std::shared_ptr<std::u16string> and, when installed,
// Qt's QString.
#include <halvane/collections/HVData.h>
#include <halvane/text/HVString.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#if defined(HALVANE_BENCH_WITH_QT)
#include <QString>
#endif

namespace {

// 4 KiB of text: plain ASCII, or German and French with accents.
std::string sampleText(bool accented) {
    std::string piece = accented ? "Grüße aus Köln, déjà vu à Genève; " : "The quick brown fox jumps over it. ";
    std::string text;
    while (text.size() < 4096) text += piece;
    text.resize(4096);
    // Never end inside a multi-byte sequence.
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80) text.pop_back();
    if (!text.empty() && static_cast<unsigned char>(text.back()) >= 0xC0) text.pop_back();
    return text;
}

}  // namespace

static void BM_HVStringCopy(benchmark::State& state) {
    HVString original("a string that is copied");
    for (auto _ : state) {
        HVString copy(original);
        benchmark::DoNotOptimize(copy.Ref());
    }
}
BENCHMARK(BM_HVStringCopy);

static void BM_SharedU16StringCopy(benchmark::State& state) {
    auto original = std::make_shared<std::u16string>(u"a string that is copied");
    for (auto _ : state) {
        std::shared_ptr<std::u16string> copy(original);
        benchmark::DoNotOptimize(copy.get());
    }
}
BENCHMARK(BM_SharedU16StringCopy);

static void BM_HVStringFromUTF8(benchmark::State& state) {
    std::string text = sampleText(state.range(0) != 0);
    for (auto _ : state) {
        HVString string(text.c_str());
        benchmark::DoNotOptimize(string.Ref());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_HVStringFromUTF8)->Arg(0)->Arg(1)->ArgNames({"accented"});

#if defined(HALVANE_BENCH_WITH_QT)
static void BM_QStringFromUtf8(benchmark::State& state) {
    std::string text = sampleText(state.range(0) != 0);
    for (auto _ : state) {
        QString string = QString::fromUtf8(text.c_str());
        benchmark::DoNotOptimize(string.constData());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_QStringFromUtf8)->Arg(0)->Arg(1)->ArgNames({"accented"});
#endif

static void BM_HVStringWithFormat(benchmark::State& state) {
    HVString name("settings");
    for (auto _ : state) {
        HVString text = HVString::StringWithFormat("%@ holds %d entries", name.Ref(), 42);
        benchmark::DoNotOptimize(text.Ref());
    }
}
BENCHMARK(BM_HVStringWithFormat);

static void BM_HVDataSerialize64KiB(benchmark::State& state) {
    std::string bytes(64 * 1024, '\0');
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = char(i * 131 + 7);
    HVData data = HVData::DataWithBytesOfLength(bytes.data(), bytes.size());
    for (auto _ : state) {
        HVString text = data.Serialize();
        benchmark::DoNotOptimize(text.Ref());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}
BENCHMARK(BM_HVDataSerialize64KiB);
