// CoreFoundation strings: the costs every wrapper pays.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <string>

static void BM_CFStringRetainRelease(benchmark::State& state) {
    UniChar units[] = {u'h', u'e', u'l', u'l', u'o'};
    CFStringRef s = CFStringCreateWithCharacters(nullptr, units, 5);
    for (auto _ : state) {
        CFRetain(s);
        CFRelease(s);
    }
    CFRelease(s);
}
BENCHMARK(BM_CFStringRetainRelease);

namespace {

// UTF-8 text of about `size` bytes made by repeating a sample, cut at a
// character boundary.
std::string utf8Text(const char* sample, size_t size) {
    std::string text;
    while (text.size() < size) text += sample;
    size_t end = size;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    text.resize(end);
    return text;
}

constexpr const char* kAsciiSample = "The quick brown fox jumps over the lazy dog. ";
constexpr const char* kAccentedSample = "Grüße aus Köln, café crème à l'élève déçu. ";
constexpr const char* kCJKSample = "東京都の天気は晴れです。日本語の文章、漢字とかな。";

void createWithBytes(benchmark::State& state, const char* sample) {
    std::string text = utf8Text(sample, size_t(state.range(0)));
    for (auto _ : state) {
        CFStringRef s = CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                                CFIndex(text.size()), kCFStringEncodingUTF8, false);
        benchmark::DoNotOptimize(s);
        CFRelease(s);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}

void getBytesUTF8(benchmark::State& state, const char* sample) {
    std::string text = utf8Text(sample, size_t(state.range(0)));
    CFStringRef s = CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()), CFIndex(text.size()),
                                            kCFStringEncodingUTF8, false);
    std::string buffer(text.size(), '\0');
    for (auto _ : state) {
        CFIndex used = 0;
        CFStringGetBytes(s, CFRangeMake(0, CFStringGetLength(s)), kCFStringEncodingUTF8, 0, false,
                         reinterpret_cast<UInt8*>(buffer.data()), CFIndex(buffer.size()), &used);
        benchmark::DoNotOptimize(used);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
    CFRelease(s);
}

// Two equal strings but for the case of their last letter.
void compare(benchmark::State& state, const char* sample, CFStringCompareFlags options) {
    std::string text = utf8Text(sample, size_t(state.range(0)));
    std::string other = text + 'X';
    text += 'x';
    CFStringRef a = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8);
    CFStringRef b = CFStringCreateWithCString(nullptr, other.c_str(), kCFStringEncodingUTF8);
    for (auto _ : state) benchmark::DoNotOptimize(CFStringCompare(a, b, options));
    CFRelease(a);
    CFRelease(b);
}

}  // namespace

BENCHMARK_CAPTURE(createWithBytes, ascii, kAsciiSample)->Arg(16)->Arg(4096);
BENCHMARK_CAPTURE(createWithBytes, accented, kAccentedSample)->Arg(16)->Arg(4096);
BENCHMARK_CAPTURE(createWithBytes, cjk, kCJKSample)->Arg(16)->Arg(4096);
BENCHMARK_CAPTURE(getBytesUTF8, ascii, kAsciiSample)->Arg(4096);
BENCHMARK_CAPTURE(getBytesUTF8, accented, kAccentedSample)->Arg(4096);
BENCHMARK_CAPTURE(compare, asciiLiteral, kAsciiSample, 0)->Arg(4096);
BENCHMARK_CAPTURE(compare, asciiCaseInsensitive, kAsciiSample, kCFCompareCaseInsensitive)->Arg(4096);
BENCHMARK_CAPTURE(compare, accentedCaseInsensitive, kAccentedSample, kCFCompareCaseInsensitive)->Arg(4096);
