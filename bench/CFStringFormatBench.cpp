// CFStringCreateWithFormat: the cost of every log line and description.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <cstdio>

// The common shape: an object and a count.
static void BM_CFStringFormatObjectAndInt(benchmark::State& state) {
    UniChar units[] = {u'l', u'i', u's', u't'};
    CFStringRef name = CFStringCreateWithCharacters(nullptr, units, 4);
    int count = 0;
    for (auto _ : state) {
        CFStringRef s = CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@ : %d items"), name, ++count);
        benchmark::DoNotOptimize(s);
        CFRelease(s);
    }
    CFRelease(name);
}
BENCHMARK(BM_CFStringFormatObjectAndInt);

static void BM_CFStringFormatIntegers(benchmark::State& state) {
    long value = 1234567;
    for (auto _ : state) {
        CFStringRef s = CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%d %5u %08x %ld %lld %-6d|"), int(value), 42u,
                                                 0xbeefu, value, -value * 1000LL, -7);
        benchmark::DoNotOptimize(s);
        CFRelease(s);
        ++value;
    }
}
BENCHMARK(BM_CFStringFormatIntegers);

static void BM_CFStringFormatNumbersWithFloats(benchmark::State& state) {
    double real = 3.14159;
    for (auto _ : state) {
        CFStringRef s = CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%d/%u %.3f %x %lld %g"), 12, 34u, real, 255u,
                                                 1LL << 40, 0.5);
        benchmark::DoNotOptimize(s);
        CFRelease(s);
        real += 1.0;
    }
}
BENCHMARK(BM_CFStringFormatNumbersWithFloats);

static void BM_CFStringFormatPositional(benchmark::State& state) {
    for (auto _ : state) {
        CFStringRef s = CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%2$@ has %1$d (%1$x) %2$@"), 255, CFSTR("x"));
        benchmark::DoNotOptimize(s);
        CFRelease(s);
    }
}
BENCHMARK(BM_CFStringFormatPositional);

static void BM_CFStringAppendFormat(benchmark::State& state) {
    CFMutableStringRef s = CFStringCreateMutable(nullptr, 0);
    int n = 0;
    for (auto _ : state) {
        CFStringAppendFormat(s, nullptr, CFSTR("%d,"), ++n);
        if ((n & 1023) == 0) {
            CFRelease(s);
            s = CFStringCreateMutable(nullptr, 0);
        }
    }
    CFRelease(s);
}
BENCHMARK(BM_CFStringAppendFormat);

// Reference: the C library alone, into a stack buffer (no string made).
static void BM_SnprintfIntegersReference(benchmark::State& state) {
    long value = 1234567;
    char buffer[128];
    for (auto _ : state) {
        int n = std::snprintf(buffer, sizeof buffer, "%d %5u %08x %ld %lld %-6d|", int(value), 42u, 0xbeefu, value,
                              -value * 1000LL, -7);
        benchmark::DoNotOptimize(n);
        benchmark::DoNotOptimize(buffer);
        ++value;
    }
}
BENCHMARK(BM_SnprintfIntegersReference);

static void BM_SnprintfObjectShapeReference(benchmark::State& state) {
    char buffer[64];
    int count = 0;
    for (auto _ : state) {
        int n = std::snprintf(buffer, sizeof buffer, "%s : %d items", "list", ++count);
        benchmark::DoNotOptimize(n);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(BM_SnprintfObjectShapeReference);
