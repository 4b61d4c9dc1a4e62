// JSON: decoding and encoding a 1 MiB document through HVJSONSerialization,
// beside jsoncpp alone (the parser and writer it maps from and to) and, when
// installed, Qt's QJsonDocument; and the text form of an array of 10,000
// mixed elements (HVArray::Serialize and Deserialize).
#include <halvane/collections/HVArray.h>
#include <halvane/collections/HVData.h>
#include <halvane/collections/HVMutableArray.h>
#include <halvane/collections/HVMutableDictionary.h>
#include <halvane/core/HVNull.h>
#include <halvane/errors/HVError.h>
#include <halvane/serialization/HVJSONSerialization.h>
#include <halvane/time/HVDate.h>
#include <halvane/values/HVBool.h>
#include <halvane/values/HVNumber.h>

#include <benchmark/benchmark.h>

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

#include <memory>
#include <sstream>
#include <string>

#if defined(HALVANE_BENCH_WITH_QT)
#include <QByteArray>
#include <QJsonDocument>
#endif

// Json::Reader and Json::StyledWriter are what HVJSONSerialization runs on.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

// One record of an API-like listing: strings (some accented, some CJK,
// some with escapes), integers, reals, booleans, null, an array and a
// nested object.
HVDictionary record(int i) {
    HVMutableDictionary author;
    author.SetStringForKey(i % 3 == 0 ? "\xE5\xB1\xB1\xE7\x94\xB0 \xE5\xA4\xAA\xE9\x83\x8E" : "Maren \xC3\x98stby", "name");
    author.SetNumberForKey(HVNumber(i * 7919 % 100000), "id");
    author.SetBoolForKey(HVBool(i % 2 == 0), "verified");
    HVMutableArray tags;
    for (int t = 0; t < 4; ++t) tags.AddString(HVString("tag" + std::to_string((i + t) % 13)));
    HVMutableArray position;
    position.AddNumber(HVNumber(10.7461 + i * 1e-4));
    position.AddNumber(HVNumber(59.9075 - i * 1e-4));
    HVMutableDictionary item;
    item.SetNumberForKey(HVNumber(i), "id");
    item.SetStringForKey("Caf\xC3\xA9 r\xC3\xA9sum\xC3\xA9 #" + std::to_string(i) + " \"quoted\"\tand tabbed", "title");
    item.SetStringForKey("/api/v2/items/" + std::to_string(i) + "?expand=author&lang=nb", "url");
    item.SetNumberForKey(HVNumber(i / 3.0), "score");
    item.SetNumberForKey(HVNumber(-i), "delta");
    item.SetBoolForKey(HVBool(i % 5 == 0), "archived");
    item.SetObjectForKey(HVNull(), "parent");
    item.SetDictionaryForKey(author.Copy(), "author");
    item.SetArrayForKey(tags.Copy(), "tags");
    item.SetArrayForKey(position.Copy(), "position");
    return item.Copy();
}

// The document as objects and as text. The text is jsoncpp's indented
// form with UTF-8 written as it is (as most tools write it), not escaped.
struct Document {
    HVDictionary object;
    std::string text;

    Document() {
        HVMutableArray items;
        for (int i = 0;; ++i) {
            items.AddDictionary(record(i));
            if (i % 100 != 99) continue;
            HVMutableDictionary top;
            top.SetStringForKey("ok", "status");
            top.SetArrayForKey(items.Copy(), "items");
            object = top.Copy();
            HVData data = HVJSONSerialization::JSONDataWithDictionary(object);
            Json::Value root;
            Json::Reader().parse(static_cast<const char*>(data.Bytes()),
                                 static_cast<const char*>(data.Bytes()) + data.Length(), root);
            Json::StreamWriterBuilder builder;
            builder["emitUTF8"] = true;
            builder["indentation"] = "   ";
            text = Json::writeString(builder, root);
            if (text.size() >= (size_t(1) << 20)) break;
        }
    }
};

const Document& document() {
    static const Document* shared = new Document;
    return *shared;
}

HVData documentData() {
    const std::string& text = document().text;
    return HVData::DataWithBytesOfLength(text.data(), text.size());
}

}  // namespace

// Decoding.

static void BM_JSONDecode_Halvane(benchmark::State& state) {
    HVData data = documentData();
    for (auto _ : state) {
        HVError error;
        HVObject object = HVJSONSerialization::ObjectWithJSONData(data, error);
        if (error.IsError() || object.ObjectsClassType() != HVDictionaryClassType) {
            state.SkipWithError("the document was not decoded");
            break;
        }
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(data.Length()));
}
BENCHMARK(BM_JSONDecode_Halvane)->Unit(benchmark::kMillisecond);

static void BM_JSONDecode_jsoncpp(benchmark::State& state) {
    const std::string& text = document().text;
    for (auto _ : state) {
        Json::Reader reader;
        Json::Value root;
        if (!reader.parse(text.data(), text.data() + text.size(), root, true)) {
            state.SkipWithError("jsoncpp did not parse the document");
            break;
        }
        benchmark::DoNotOptimize(root);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_JSONDecode_jsoncpp)->Unit(benchmark::kMillisecond);

#if defined(HALVANE_BENCH_WITH_QT)
static void BM_JSONDecode_Qt(benchmark::State& state) {
    const std::string& text = document().text;
    QByteArray bytes = QByteArray::fromRawData(text.data(), int(text.size()));
    for (auto _ : state) {
        QJsonDocument parsed = QJsonDocument::fromJson(bytes);
        if (!parsed.isObject()) {
            state.SkipWithError("Qt did not parse the document");
            break;
        }
        benchmark::DoNotOptimize(parsed);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()));
}
BENCHMARK(BM_JSONDecode_Qt)->Unit(benchmark::kMillisecond);
#endif

// Encoding.

static void BM_JSONEncode_Halvane(benchmark::State& state) {
    const HVDictionary& object = document().object;
    int64_t bytes = 0;
    for (auto _ : state) {
        HVData data = HVJSONSerialization::JSONDataWithDictionary(object);
        bytes += int64_t(data.Length());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_JSONEncode_Halvane)->Unit(benchmark::kMillisecond);

static void BM_JSONEncode_jsoncpp(benchmark::State& state) {
    const std::string& text = document().text;
    Json::Value root;
    Json::Reader().parse(text.data(), text.data() + text.size(), root, true);
    int64_t bytes = 0;
    for (auto _ : state) {
        Json::StyledWriter writer;
        bytes += int64_t(writer.write(root).size());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_JSONEncode_jsoncpp)->Unit(benchmark::kMillisecond);

// What a program holding its data elsewhere pays to write it with jsoncpp:
// build the tree (here a deep copy of a parsed one, jsoncpp's own fastest
// way to make every node) and write it.
static void BM_JSONEncode_jsoncppWithTree(benchmark::State& state) {
    const std::string& text = document().text;
    Json::Value parsed;
    Json::Reader().parse(text.data(), text.data() + text.size(), parsed, true);
    int64_t bytes = 0;
    for (auto _ : state) {
        Json::Value root(parsed);
        Json::StyledWriter writer;
        bytes += int64_t(writer.write(root).size());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_JSONEncode_jsoncppWithTree)->Unit(benchmark::kMillisecond);

#if defined(HALVANE_BENCH_WITH_QT)
static void BM_JSONEncode_Qt(benchmark::State& state) {
    const std::string& text = document().text;
    QJsonDocument parsed = QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), int(text.size())));
    int64_t bytes = 0;
    for (auto _ : state) bytes += parsed.toJson(QJsonDocument::Indented).size();
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_JSONEncode_Qt)->Unit(benchmark::kMillisecond);
#endif

// The text form of an array: 10,000 elements cycling through strings,
// integers, reals, booleans, dates and small dictionaries.

namespace {

constexpr int kMixedElements = 10000;

HVArray mixedArray() {
    HVMutableArray array;
    for (int i = 0; i < kMixedElements; ++i) {
        switch (i % 6) {
            case 0: array.AddString(HVString("element \xE2\x84\x96" + std::to_string(i))); break;
            case 1: array.AddNumber(HVNumber(i * 31)); break;
            case 2: array.AddNumber(HVNumber(i / 7.0)); break;
            case 3: array.AddBool(HVBool(i % 4 == 3)); break;
            case 4: array.AddObject(HVDate::DateWithTimeIntervalSinceReferenceDate(600000000.0 + i)); break;
            default: {
                HVMutableDictionary entry;
                entry.SetStringForKey("entry-" + std::to_string(i), "name");
                entry.SetNumberForKey(HVNumber(i), "count");
                array.AddDictionary(entry.Copy());
                break;
            }
        }
    }
    return array.Copy();
}

}  // namespace

static void BM_HVArraySerialize(benchmark::State& state) {
    HVArray array = mixedArray();
    for (auto _ : state) {
        HVString text = array.Serialize();
        benchmark::DoNotOptimize(text.Ref());
    }
    state.SetItemsProcessed(state.iterations() * kMixedElements);
}
BENCHMARK(BM_HVArraySerialize)->Unit(benchmark::kMillisecond);

static void BM_HVArrayDeserialize(benchmark::State& state) {
    HVArray source = mixedArray();
    HVString text = source.Serialize();
    for (auto _ : state) {
        HVArray array;
        array.Deserialize(text);
        if (array.Count() != uint64_t(kMixedElements)) {
            state.SkipWithError("the array was not read back");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * kMixedElements);
}
BENCHMARK(BM_HVArrayDeserialize)->Unit(benchmark::kMillisecond);
