// CoreFoundation dictionaries: lookups with string keys, the path every
// property-list and user-info access takes.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

constexpr int kEntries = 1000;

CFStringRef newString(const std::string& text) {
    std::u16string units(text.begin(), text.end());
    return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units.data()), CFIndex(units.size()));
}

// "key0".."key999" (or with another prefix), each a distinct object.
std::vector<CFStringRef> newKeys(const char* prefix) {
    std::vector<CFStringRef> keys;
    for (int i = 0; i < kEntries; ++i) keys.push_back(newString(prefix + std::to_string(i)));
    return keys;
}

void releaseAll(const std::vector<CFStringRef>& objects) {
    for (CFStringRef s : objects) CFRelease(s);
}

CFMutableDictionaryRef newDictionary(const std::vector<CFStringRef>& keys) {
    CFMutableDictionaryRef d =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    for (CFStringRef key : keys) CFDictionarySetValue(d, key, key);
    return d;
}

// Lookups through other objects with the same text, so that every hit hashes
// the key and compares the units.
void BM_CFDictionaryGetValueStringHit(benchmark::State& state) {
    std::vector<CFStringRef> keys = newKeys("key");
    std::vector<CFStringRef> probes = newKeys("key");
    CFMutableDictionaryRef d = newDictionary(keys);
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(CFDictionaryGetValue(d, probes[i]));
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
    CFRelease(d);
    releaseAll(keys);
    releaseAll(probes);
}
BENCHMARK(BM_CFDictionaryGetValueStringHit);

void BM_CFDictionaryGetValueStringMiss(benchmark::State& state) {
    std::vector<CFStringRef> keys = newKeys("key");
    std::vector<CFStringRef> probes = newKeys("absent");
    CFMutableDictionaryRef d = newDictionary(keys);
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(CFDictionaryGetValue(d, probes[i]));
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
    CFRelease(d);
    releaseAll(keys);
    releaseAll(probes);
}
BENCHMARK(BM_CFDictionaryGetValueStringMiss);

// Building a 1,000-entry dictionary from scratch, growth included.
void BM_CFDictionarySetValue1000(benchmark::State& state) {
    std::vector<CFStringRef> keys = newKeys("key");
    for (auto _ : state) {
        CFMutableDictionaryRef d = newDictionary(keys);
        benchmark::DoNotOptimize(d);
        CFRelease(d);
    }
    state.SetItemsProcessed(state.iterations() * kEntries);
    releaseAll(keys);
}
BENCHMARK(BM_CFDictionarySetValue1000);

}  // namespace
