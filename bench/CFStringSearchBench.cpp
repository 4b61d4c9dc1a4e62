// Searching 64 KiB of text for a needle placed near its end.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <string>

namespace {

constexpr size_t kTextBytes = 64 * 1024;

// About kTextBytes of UTF-8 made by repeating sample, with needle inserted
// 64 bytes before the end.
std::string textWithNeedleNearEnd(const char* sample, const char* needle) {
    std::string text;
    while (text.size() < kTextBytes - 64) text += sample;
    text += needle;
    while (text.size() < kTextBytes) text += sample;
    return text;
}

void find(benchmark::State& state, const char* sample, const char* hidden, const char* needle,
          CFStringCompareFlags options) {
    std::string text = textWithNeedleNearEnd(sample, hidden);
    CFStringRef s = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8);
    CFStringRef n = CFStringCreateWithCString(nullptr, needle, kCFStringEncodingUTF8);
    CFRange whole = CFRangeMake(0, CFStringGetLength(s));
    CFRange found = {kCFNotFound, 0};
    for (auto _ : state) {
        benchmark::DoNotOptimize(CFStringFindWithOptions(s, n, whole, options, &found));
    }
    if (found.location == kCFNotFound || found.location < whole.length - 200) state.SkipWithError("needle not found");
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
    CFRelease(n);
    CFRelease(s);
}

constexpr const char* kAscii = "The quick brown fox jumps over the lazy dog. ";
constexpr const char* kAccented = "Grüße aus Köln, café crème à l'élève déçu. ";

}  // namespace

BENCHMARK_CAPTURE(find, ascii_literal, kAscii, "Zebra Crossing", "Zebra Crossing", 0);
BENCHMARK_CAPTURE(find, ascii_case_insensitive, kAscii, "Zebra Crossing", "zEBRA cROSSING", kCFCompareCaseInsensitive);
BENCHMARK_CAPTURE(find, accented_literal, kAccented, "Straße zum Ölberg", "Straße zum Ölberg", 0);
BENCHMARK_CAPTURE(find, accented_case_insensitive, kAccented, "Straße zum Ölberg", "STRASSE ZUM ÖLBERG",
                  kCFCompareCaseInsensitive);
BENCHMARK_CAPTURE(find, accented_case_and_diacritic_insensitive, kAccented, "Straße zum Ölberg", "strasse zum olberg",
                  kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive);
