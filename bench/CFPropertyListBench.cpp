// XML property lists: reading and writing a 1 MiB document of nested
// dictionaries and arrays holding strings, integers, reals, dates and data,
// beside libplist on the same document when it is installed.
#include <CoreFoundation/CoreFoundation.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#if defined(HALVANE_BENCH_WITH_LIBPLIST)
#include <plist/plist.h>
#endif

namespace {

CFStringRef text(const std::string& s) {
    return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(s.data()), CFIndex(s.size()),
                                   kCFStringEncodingUTF8, false);
}

void set(CFMutableDictionaryRef d, const char* key, CFTypeRef value) {
    CFStringRef k = text(key);
    CFDictionarySetValue(d, k, value);
    CFRelease(k);
    CFRelease(value);
}

template <typename T>
CFNumberRef number(CFNumberType type, T value) {
    return CFNumberCreate(nullptr, type, &value);
}

// One settings-like record: strings (some non-ASCII, some with entities),
// numbers, a date, a small blob, an array and a nested dictionary.
CFDictionaryRef newRecord(int i) {
    CFMutableDictionaryRef record =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    set(record, "Identifier", text("org.example.record-" + std::to_string(i)));
    set(record, "Title", text("R\xC3\xA9sum\xC3\xA9 #" + std::to_string(i) + " & notes <draft>"));
    set(record, "Path", text("/Users/someone/Documents/Projects/" + std::to_string(i % 97) + "/file.txt"));
    set(record, "Count", number(kCFNumberSInt64Type, int64_t(i) * 7919));
    set(record, "Ratio", number(kCFNumberFloat64Type, i / 3.0));
    set(record, "Enabled", CFRetain(i % 2 == 0 ? kCFBooleanTrue : kCFBooleanFalse));
    set(record, "Modified", CFDateCreate(nullptr, 600000000.0 + i * 3600.0));
    UInt8 blob[48];
    for (int b = 0; b < 48; ++b) blob[b] = UInt8(i * 31 + b);
    set(record, "Thumbnail", CFDataCreate(nullptr, blob, sizeof blob));
    CFMutableArrayRef tags = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    for (int t = 0; t < 4; ++t) {
        CFStringRef tag = text("tag" + std::to_string((i + t) % 13));
        CFArrayAppendValue(tags, tag);
        CFRelease(tag);
    }
    set(record, "Tags", tags);
    CFMutableDictionaryRef window =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    set(window, "X", number(kCFNumberSInt32Type, i % 1280));
    set(window, "Y", number(kCFNumberSInt32Type, i % 800));
    set(window, "Zoom", number(kCFNumberFloat64Type, 1.25));
    set(record, "Window", window);
    return record;
}

struct Document {
    CFPropertyListRef plist = nullptr;
    CFDataRef xml = nullptr;

    Document() {
        CFMutableArrayRef records = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
        CFMutableDictionaryRef top =
            CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
        set(top, "Version", number(kCFNumberSInt32Type, 3));
        CFDictionarySetValue(top, CFSTR("Records"), records);
        for (int i = 0;; ++i) {
            CFDictionaryRef record = newRecord(i);
            CFArrayAppendValue(records, record);
            CFRelease(record);
            if (i % 100 == 99) {
                CFDataRef data = CFPropertyListCreateData(nullptr, top, kCFPropertyListXMLFormat_v1_0, 0, nullptr);
                bool large = CFDataGetLength(data) >= (CFIndex(1) << 20);
                if (large) {
                    xml = data;
                    break;
                }
                CFRelease(data);
            }
        }
        CFRelease(records);
        plist = top;
    }
};

const Document& document() {
    static const Document* shared = new Document;
    return *shared;
}

// The interoperability corpus's 1 MB file, when HALVANE_SHARED_DIR names
// the shared directory; NULL otherwise.
CFDataRef corpusDocument() {
    static CFDataRef shared = [] () -> CFDataRef {
        const char* directory = std::getenv("HALVANE_SHARED_DIR");
        if (directory == nullptr) return nullptr;
        std::ifstream file(std::string(directory) + "/corpus/plist/NSURLTestData.plist", std::ios::binary);
        std::stringstream contents;
        contents << file.rdbuf();
        std::string bytes = contents.str();
        if (bytes.empty()) return nullptr;
        return CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size()));
    }();
    return shared;
}

void BM_PropertyListReadXMLCorpus(benchmark::State& state) {
    CFDataRef xml = corpusDocument();
    if (xml == nullptr) {
        state.SkipWithError("HALVANE_SHARED_DIR does not name the shared directory");
        return;
    }
    for (auto _ : state) {
        CFPropertyListRef plist = CFPropertyListCreateWithData(nullptr, xml, kCFPropertyListImmutable, nullptr, nullptr);
        benchmark::DoNotOptimize(plist);
        CFRelease(plist);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * CFDataGetLength(xml));
}
BENCHMARK(BM_PropertyListReadXMLCorpus)->Unit(benchmark::kMillisecond);

void BM_PropertyListReadXML(benchmark::State& state) {
    CFDataRef xml = document().xml;
    for (auto _ : state) {
        CFPropertyListRef plist = CFPropertyListCreateWithData(nullptr, xml, kCFPropertyListImmutable, nullptr, nullptr);
        if (plist == nullptr) {
            state.SkipWithError("the document was not read");
            break;
        }
        CFRelease(plist);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * CFDataGetLength(xml));
}
BENCHMARK(BM_PropertyListReadXML)->Unit(benchmark::kMillisecond);

void BM_PropertyListReadXMLMutableLeaves(benchmark::State& state) {
    CFDataRef xml = document().xml;
    for (auto _ : state) {
        CFPropertyListRef plist =
            CFPropertyListCreateWithData(nullptr, xml, kCFPropertyListMutableContainersAndLeaves, nullptr, nullptr);
        benchmark::DoNotOptimize(plist);
        CFRelease(plist);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * CFDataGetLength(xml));
}
BENCHMARK(BM_PropertyListReadXMLMutableLeaves)->Unit(benchmark::kMillisecond);

void BM_PropertyListWriteXML(benchmark::State& state) {
    CFPropertyListRef plist = document().plist;
    int64_t bytes = 0;
    for (auto _ : state) {
        CFDataRef xml = CFPropertyListCreateData(nullptr, plist, kCFPropertyListXMLFormat_v1_0, 0, nullptr);
        bytes += CFDataGetLength(xml);
        CFRelease(xml);
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_PropertyListWriteXML)->Unit(benchmark::kMillisecond);

#if defined(HALVANE_BENCH_WITH_LIBPLIST)
void BM_PropertyListReadXML_libplist(benchmark::State& state) {
    CFDataRef xml = document().xml;
    auto bytes = reinterpret_cast<const char*>(CFDataGetBytePtr(xml));
    for (auto _ : state) {
        plist_t node = nullptr;
        plist_from_xml(bytes, uint32_t(CFDataGetLength(xml)), &node);
        if (node == nullptr) {
            state.SkipWithError("libplist did not read the document");
            break;
        }
        plist_free(node);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * CFDataGetLength(xml));
}
BENCHMARK(BM_PropertyListReadXML_libplist)->Unit(benchmark::kMillisecond);

void BM_PropertyListReadXMLCorpus_libplist(benchmark::State& state) {
    CFDataRef xml = corpusDocument();
    if (xml == nullptr) {
        state.SkipWithError("HALVANE_SHARED_DIR does not name the shared directory");
        return;
    }
    for (auto _ : state) {
        plist_t node = nullptr;
        plist_from_xml(reinterpret_cast<const char*>(CFDataGetBytePtr(xml)), uint32_t(CFDataGetLength(xml)), &node);
        benchmark::DoNotOptimize(node);
        plist_free(node);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * CFDataGetLength(xml));
}
BENCHMARK(BM_PropertyListReadXMLCorpus_libplist)->Unit(benchmark::kMillisecond);

void BM_PropertyListWriteXML_libplist(benchmark::State& state) {
    CFDataRef xml = document().xml;
    plist_t node = nullptr;
    plist_from_xml(reinterpret_cast<const char*>(CFDataGetBytePtr(xml)), uint32_t(CFDataGetLength(xml)), &node);
    int64_t bytes = 0;
    for (auto _ : state) {
        char* out = nullptr;
        uint32_t length = 0;
        plist_to_xml(node, &out, &length);
        bytes += length;
        plist_to_xml_free(out);
    }
    state.SetBytesProcessed(bytes);
    plist_free(node);
}
BENCHMARK(BM_PropertyListWriteXML_libplist)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
