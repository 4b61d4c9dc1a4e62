// Arrays and dictionaries of the library beside the raw platform calls they
// wrap and, when installed, Qt's variant containers. Keys and elements are
// probed through other objects with the same text, so that every lookup
// hashes and compares.
#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVDictionary.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/collections/HVMutableDictionary.h>

#include <CoreFoundation/CFRuntime.h>
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#if defined(HALVANE_BENCH_WITH_QT)
#include <QHash>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#endif

namespace {

constexpr int kDictionaryEntries = 1000;
constexpr int kArrayElements = 10000;
constexpr int kAppended = 100000;

std::string keyText(int i) { return "settings.key." + std::to_string(i); }

std::vector<HVString> keys(int count) {
    std::vector<HVString> result;
    for (int i = 0; i < count; ++i) result.emplace_back(keyText(i));
    return result;
}

HVDictionary dictionaryOfStrings() {
    HVMutableDictionary dictionary;
    for (const HVString& key : keys(kDictionaryEntries)) dictionary.SetStringForKey(key, key);
    return dictionary.Copy();
}

HVArray arrayOfStrings() {
    HVMutableArray array;
    for (int i = 0; i < kArrayElements; ++i) array.AddString(HVString(keyText(i)));
    return array.Copy();
}

}  // namespace

// Dictionaries: StringForKey against the raw lookup.

static void BM_CFDictionaryGetValue(benchmark::State& state) {
    HVDictionary dictionary = dictionaryOfStrings();
    std::vector<HVString> probes = keys(kDictionaryEntries);
    auto raw = static_cast<CFDictionaryRef>(dictionary.Ref());
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(CFDictionaryGetValue(raw, probes[i].Ref()));
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CFDictionaryGetValue);

// What a careful caller of the raw calls does to keep a string value: look
// it up, check its type, and hold a reference while using it.
static void BM_CFDictionaryGetValueCheckedAndRetained(benchmark::State& state) {
    HVDictionary dictionary = dictionaryOfStrings();
    std::vector<HVString> probes = keys(kDictionaryEntries);
    auto raw = static_cast<CFDictionaryRef>(dictionary.Ref());
    const CFTypeID stringType = CFStringGetTypeID();
    size_t i = 0;
    for (auto _ : state) {
        CFTypeRef value = CFDictionaryGetValue(raw, probes[i].Ref());
        if (value != nullptr && CFGetTypeID(value) == stringType) {
            CFRetain(value);
            benchmark::DoNotOptimize(value);
            CFRelease(value);
        }
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CFDictionaryGetValueCheckedAndRetained);

static void BM_HVDictionaryStringForKey(benchmark::State& state) {
    HVDictionary dictionary = dictionaryOfStrings();
    std::vector<HVString> probes = keys(kDictionaryEntries);
    size_t i = 0;
    for (auto _ : state) {
        HVString value = dictionary.StringForKey(probes[i]);
        benchmark::DoNotOptimize(value.Ref());
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_HVDictionaryStringForKey);

static void BM_HVDictionaryStringForExistingKey(benchmark::State& state) {
    HVDictionary dictionary = dictionaryOfStrings();
    std::vector<HVString> probes = keys(kDictionaryEntries);
    size_t i = 0;
    for (auto _ : state) {
        HVString value = dictionary.StringForExistingKey(probes[i]);
        benchmark::DoNotOptimize(value.Ref());
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_HVDictionaryStringForExistingKey);

#if defined(HALVANE_BENCH_WITH_QT)
static void BM_QVariantMapValueToString(benchmark::State& state) {
    QVariantMap map;
    std::vector<QString> probes;
    for (int i = 0; i < kDictionaryEntries; ++i) {
        QString key = QString::fromStdString(keyText(i));
        map.insert(key, key);
        probes.push_back(QString::fromStdString(keyText(i)));
    }
    size_t i = 0;
    for (auto _ : state) {
        QString value = map.value(probes[i]).toString();
        benchmark::DoNotOptimize(value.constData());
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_QVariantMapValueToString);

static void BM_QHashValueToString(benchmark::State& state) {
    QHash<QString, QVariant> hash;
    std::vector<QString> probes;
    for (int i = 0; i < kDictionaryEntries; ++i) {
        QString key = QString::fromStdString(keyText(i));
        hash.insert(key, key);
        probes.push_back(QString::fromStdString(keyText(i)));
    }
    size_t i = 0;
    for (auto _ : state) {
        QString value = hash.value(probes[i]).toString();
        benchmark::DoNotOptimize(value.constData());
        if (++i == probes.size()) i = 0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_QHashValueToString);
#endif

// Arrays: element access over 10,000 strings, one whole pass per iteration.

static void BM_CFArrayGetValueAtIndexOverStrings(benchmark::State& state) {
    HVArray array = arrayOfStrings();
    auto raw = static_cast<CFArrayRef>(array.Ref());
    for (auto _ : state) {
        for (CFIndex i = 0; i < kArrayElements; ++i) benchmark::DoNotOptimize(CFArrayGetValueAtIndex(raw, i));
    }
    state.SetItemsProcessed(state.iterations() * kArrayElements);
}
BENCHMARK(BM_CFArrayGetValueAtIndexOverStrings);

static void BM_CFArrayGetValueAtIndexCheckedAndRetained(benchmark::State& state) {
    HVArray array = arrayOfStrings();
    auto raw = static_cast<CFArrayRef>(array.Ref());
    const CFTypeID stringType = CFStringGetTypeID();
    for (auto _ : state) {
        for (CFIndex i = 0; i < kArrayElements; ++i) {
            if (i >= CFArrayGetCount(raw)) break;
            CFTypeRef element = CFArrayGetValueAtIndex(raw, i);
            if (element != nullptr && CFGetTypeID(element) == stringType) {
                CFRetain(element);
                benchmark::DoNotOptimize(element);
                CFRelease(element);
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * kArrayElements);
}
BENCHMARK(BM_CFArrayGetValueAtIndexCheckedAndRetained);

// The least that any accessor handing out an owned element can do: the raw
// call, then the type check, retain and release done in place. Over 10,000
// strings the retain and release write to every element's memory, which
// the bare call never reads.
static void BM_CFArrayGetValueAtIndexRetainedInPlace(benchmark::State& state) {
    HVArray array = arrayOfStrings();
    auto raw = static_cast<CFArrayRef>(array.Ref());
    const CFTypeID stringType = CFStringGetTypeID();
    for (auto _ : state) {
        for (CFIndex i = 0; i < kArrayElements; ++i) {
            CFTypeRef element = CFArrayGetValueAtIndex(raw, i);
            if (_CFRuntimeGetTypeID(element) == stringType) {
                _CFRuntimeRetain(element);
                benchmark::DoNotOptimize(element);
                _CFRuntimeRelease(element);
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * kArrayElements);
}
BENCHMARK(BM_CFArrayGetValueAtIndexRetainedInPlace);

static void BM_HVArrayObjectAtIndex(benchmark::State& state) {
    HVArray array = arrayOfStrings();
    for (auto _ : state) {
        for (unsigned long long i = 0; i < kArrayElements; ++i) {
            HVObject element = array.ObjectAtIndex(i);
            benchmark::DoNotOptimize(element.Ref());
        }
    }
    state.SetItemsProcessed(state.iterations() * kArrayElements);
}
BENCHMARK(BM_HVArrayObjectAtIndex);

static void BM_HVArrayStringAtIndex(benchmark::State& state) {
    HVArray array = arrayOfStrings();
    for (auto _ : state) {
        for (unsigned long long i = 0; i < kArrayElements; ++i) {
            HVString element = array.StringAtIndex(i);
            benchmark::DoNotOptimize(element.Ref());
        }
    }
    state.SetItemsProcessed(state.iterations() * kArrayElements);
}
BENCHMARK(BM_HVArrayStringAtIndex);

#if defined(HALVANE_BENCH_WITH_QT)
static void BM_QVariantListAtToString(benchmark::State& state) {
    QVariantList list;
    for (int i = 0; i < kArrayElements; ++i) list.append(QString::fromStdString(keyText(i)));
    for (auto _ : state) {
        for (int i = 0; i < kArrayElements; ++i) {
            QString element = list.at(i).toString();
            benchmark::DoNotOptimize(element.constData());
        }
    }
    state.SetItemsProcessed(state.iterations() * kArrayElements);
}
BENCHMARK(BM_QVariantListAtToString);

static void BM_QVariantListAt(benchmark::State& state) {
    QVariantList list;
    for (int i = 0; i < kArrayElements; ++i) list.append(QString::fromStdString(keyText(i)));
    for (auto _ : state) {
        for (int i = 0; i < kArrayElements; ++i) {
            QVariant element = list.at(i);
            benchmark::DoNotOptimize(element.constData());
        }
    }
    state.SetItemsProcessed(state.iterations() * kArrayElements);
}
BENCHMARK(BM_QVariantListAt);
#endif

// Appending 100,000 strings (made beforehand) to a new array.

static void BM_HVMutableArrayAddString(benchmark::State& state) {
    std::vector<HVString> strings = keys(kAppended);
    for (auto _ : state) {
        HVMutableArray array;
        for (const HVString& string : strings) array.AddString(string);
        benchmark::DoNotOptimize(array.Ref());
    }
    state.SetItemsProcessed(state.iterations() * kAppended);
}
BENCHMARK(BM_HVMutableArrayAddString)->Unit(benchmark::kMillisecond);

static void BM_CFArrayAppendValue(benchmark::State& state) {
    std::vector<HVString> strings = keys(kAppended);
    for (auto _ : state) {
        CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
        for (const HVString& string : strings) CFArrayAppendValue(array, string.Ref());
        benchmark::DoNotOptimize(array);
        CFRelease(array);
    }
    state.SetItemsProcessed(state.iterations() * kAppended);
}
BENCHMARK(BM_CFArrayAppendValue)->Unit(benchmark::kMillisecond);

#if defined(HALVANE_BENCH_WITH_QT)
static void BM_QVariantListAppend(benchmark::State& state) {
    std::vector<QString> strings;
    for (int i = 0; i < kAppended; ++i) strings.push_back(QString::fromStdString(keyText(i)));
    for (auto _ : state) {
        QVariantList list;
        for (const QString& string : strings) list.append(string);
        benchmark::DoNotOptimize(list.size());
    }
    state.SetItemsProcessed(state.iterations() * kAppended);
}
BENCHMARK(BM_QVariantListAppend)->Unit(benchmark::kMillisecond);
#endif
