// CoreFoundation arrays and data: the per-element costs that collections
// and buffers of the library pay.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <cstdint>

static void BM_CFArrayAppendValueRaw(benchmark::State& state) {
    const CFIndex count = state.range(0);
    for (auto _ : state) {
        CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, nullptr);
        for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(array, reinterpret_cast<const void*>(i));
        benchmark::DoNotOptimize(array);
        CFRelease(array);
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_CFArrayAppendValueRaw)->Arg(1000);

static void BM_CFArrayAppendValueCFType(benchmark::State& state) {
    const CFIndex count = state.range(0);
    CFStringRef value = CFSTR("value");
    for (auto _ : state) {
        CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
        for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(array, value);
        benchmark::DoNotOptimize(array);
        CFRelease(array);
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_CFArrayAppendValueCFType)->Arg(1000);

static void BM_CFArrayGetValueAtIndex(benchmark::State& state) {
    const CFIndex count = 1000;
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, nullptr);
    for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(array, reinterpret_cast<const void*>(i));
    for (auto _ : state) {
        uintptr_t sum = 0;
        for (CFIndex i = 0; i < count; ++i) sum += reinterpret_cast<uintptr_t>(CFArrayGetValueAtIndex(array, i));
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * count);
    CFRelease(array);
}
BENCHMARK(BM_CFArrayGetValueAtIndex);

static void BM_CFArraySortValues(benchmark::State& state) {
    const CFIndex count = state.range(0);
    auto compare = [](const void* a, const void* b, void*) -> CFComparisonResult {
        uintptr_t x = reinterpret_cast<uintptr_t>(a), y = reinterpret_cast<uintptr_t>(b);
        return x < y ? kCFCompareLessThan : x > y ? kCFCompareGreaterThan : kCFCompareEqualTo;
    };
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, nullptr);
    for (CFIndex i = 0; i < count; ++i) CFArrayAppendValue(array, nullptr);
    for (auto _ : state) {
        state.PauseTiming();
        for (CFIndex i = 0; i < count; ++i) {
            CFArraySetValueAtIndex(array, i, reinterpret_cast<const void*>(uintptr_t(i) * 2654435761u % 100003));
        }
        state.ResumeTiming();
        CFArraySortValues(array, CFRangeMake(0, count), compare, nullptr);
    }
    state.SetItemsProcessed(state.iterations() * count);
    CFRelease(array);
}
BENCHMARK(BM_CFArraySortValues)->Arg(10000);

static void BM_CFDataAppendByte(benchmark::State& state) {
    const CFIndex count = state.range(0);
    for (auto _ : state) {
        CFMutableDataRef data = CFDataCreateMutable(nullptr, 0);
        for (CFIndex i = 0; i < count; ++i) {
            UInt8 byte = UInt8(i);
            CFDataAppendBytes(data, &byte, 1);
        }
        benchmark::DoNotOptimize(CFDataGetBytePtr(data));
        CFRelease(data);
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_CFDataAppendByte)->Arg(4096);
