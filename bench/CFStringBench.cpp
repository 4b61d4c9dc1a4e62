// CoreFoundation strings: the costs every wrapper pays.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

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
