// CFDictionary: callbacks, retain counts of keys and values through every
// operation, the add/set/replace/remove rules, enumeration order, equality,
// hashing, descriptions and refused misuse.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

using namespace cftest;

namespace {

Owned<CFStringRef> text(const std::string& ascii) {
    return string(std::u16string(ascii.begin(), ascii.end()));
}

Owned<CFMutableDictionaryRef> newTypeDictionary() {
    return own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

std::string pointerText(const void* p) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return buffer;
}

std::string stringDescription(CFStringRef s) {
    return "<CFString " + pointerText(s) + " [" + pointerText(kCFAllocatorSystemDefault) + "]>{contents = \"" +
           ascii(s) + "\"}";
}

struct Entries {
    std::vector<const void*> keys;
    std::vector<const void*> values;
};

Entries entriesOf(CFDictionaryRef d) {
    Entries entries{std::vector<const void*>(size_t(CFDictionaryGetCount(d))),
                    std::vector<const void*>(size_t(CFDictionaryGetCount(d)))};
    CFDictionaryGetKeysAndValues(d, entries.keys.data(), entries.values.data());
    return entries;
}

void collectEntry(const void* key, const void* value, void* context) {
    auto* entries = static_cast<Entries*>(context);
    entries->keys.push_back(key);
    entries->values.push_back(value);
}

Entries appliedEntriesOf(CFDictionaryRef d) {
    Entries entries;
    CFDictionaryApplyFunction(d, collectEntry, &entries);
    return entries;
}

const void* raw(intptr_t n) {
    return reinterpret_cast<const void*>(n);
}

// An object passed where another type is expected.
template <typename Ref>
Ref misused(CFTypeRef cf) {
    return reinterpret_cast<Ref>(const_cast<void*>(cf));
}

}  // namespace

TEST(DictionaryCallBacks, PredefinedCallBacks) {
    EXPECT_EQ(CFDictionaryGetTypeID(), 18u);
    EXPECT_EQ(kCFTypeDictionaryKeyCallBacks.version, 0);
    EXPECT_NE(kCFTypeDictionaryKeyCallBacks.retain, nullptr);
    EXPECT_NE(kCFTypeDictionaryKeyCallBacks.release, nullptr);
    EXPECT_EQ(kCFTypeDictionaryKeyCallBacks.copyDescription, CFCopyDescription);
    EXPECT_EQ(kCFTypeDictionaryKeyCallBacks.equal, CFEqual);
    EXPECT_EQ(kCFTypeDictionaryKeyCallBacks.hash, CFHash);
    // Copy-string keys share everything but the retain, which copies.
    EXPECT_NE(kCFCopyStringDictionaryKeyCallBacks.retain, kCFTypeDictionaryKeyCallBacks.retain);
    EXPECT_EQ(kCFCopyStringDictionaryKeyCallBacks.release, kCFTypeDictionaryKeyCallBacks.release);
    EXPECT_EQ(kCFCopyStringDictionaryKeyCallBacks.equal, CFEqual);
    EXPECT_EQ(kCFCopyStringDictionaryKeyCallBacks.hash, CFHash);
    EXPECT_EQ(kCFTypeDictionaryValueCallBacks.retain, kCFTypeDictionaryKeyCallBacks.retain);
    EXPECT_EQ(kCFTypeDictionaryValueCallBacks.equal, CFEqual);

    auto value = text("v");
    EXPECT_EQ(kCFTypeDictionaryValueCallBacks.retain(nullptr, value), value.get());
    EXPECT_EQ(CFGetRetainCount(value), 2);
    kCFTypeDictionaryValueCallBacks.release(nullptr, value);
    EXPECT_EQ(CFGetRetainCount(value), 1);
}

TEST(DictionaryRetainCounts, EveryOperationRetainsAndReleasesExactly) {
    auto key = text("key");
    auto equalKey = text("key");  // equal text, another object
    auto value1 = text("one");
    auto value2 = text("two");
    auto value3 = text("three");
    ASSERT_NE(key.get(), equalKey.get());
    {
        auto d = newTypeDictionary();
        CFDictionaryAddValue(d, key, value1);
        EXPECT_EQ(CFGetRetainCount(key), 2);
        EXPECT_EQ(CFGetRetainCount(value1), 2);

        // Add with a present key changes nothing at all.
        CFDictionaryAddValue(d, equalKey, value2);
        EXPECT_EQ(CFDictionaryGetCount(d), 1);
        EXPECT_EQ(CFDictionaryGetValue(d, key), value1.get());
        EXPECT_EQ(entriesOf(d).keys[0], key.get());
        EXPECT_EQ(CFGetRetainCount(key), 2);
        EXPECT_EQ(CFGetRetainCount(equalKey), 1);
        EXPECT_EQ(CFGetRetainCount(value2), 1);

        // Set replaces the stored key object as well as the value.
        CFDictionarySetValue(d, equalKey, value2);
        EXPECT_EQ(CFDictionaryGetCount(d), 1);
        EXPECT_EQ(entriesOf(d).keys[0], equalKey.get());
        EXPECT_EQ(CFDictionaryGetValue(d, key), value2.get());
        EXPECT_EQ(CFGetRetainCount(key), 1);
        EXPECT_EQ(CFGetRetainCount(equalKey), 2);
        EXPECT_EQ(CFGetRetainCount(value1), 1);
        EXPECT_EQ(CFGetRetainCount(value2), 2);

        // Setting the very same pair again leaves the counts alone.
        CFDictionarySetValue(d, equalKey, value2);
        EXPECT_EQ(CFGetRetainCount(equalKey), 2);
        EXPECT_EQ(CFGetRetainCount(value2), 2);

        // Replace acts only on a present key, and swaps key and value.
        auto absent = text("absent");
        CFDictionaryReplaceValue(d, absent, value3);
        EXPECT_EQ(CFDictionaryGetCount(d), 1);
        EXPECT_EQ(CFGetRetainCount(absent), 1);
        EXPECT_EQ(CFGetRetainCount(value3), 1);
        CFDictionaryReplaceValue(d, key, value3);
        EXPECT_EQ(entriesOf(d).keys[0], key.get());
        EXPECT_EQ(CFDictionaryGetValue(d, equalKey), value3.get());
        EXPECT_EQ(CFGetRetainCount(key), 2);
        EXPECT_EQ(CFGetRetainCount(equalKey), 1);
        EXPECT_EQ(CFGetRetainCount(value2), 1);
        EXPECT_EQ(CFGetRetainCount(value3), 2);

        // Copies retain every key and value once more, and give them back.
        {
            auto copy = own(CFDictionaryCreateCopy(nullptr, d));
            auto mutableCopy = own(CFDictionaryCreateMutableCopy(nullptr, 0, d));
            EXPECT_EQ(CFGetRetainCount(key), 4);
            EXPECT_EQ(CFGetRetainCount(value3), 4);
            EXPECT_EQ(CFGetRetainCount(copy), 1);
        }
        EXPECT_EQ(CFGetRetainCount(key), 2);
        EXPECT_EQ(CFGetRetainCount(value3), 2);

        // Removal releases the pair; removing an absent key does nothing.
        CFDictionaryRemoveValue(d, absent);
        CFDictionaryRemoveValue(d, equalKey);
        EXPECT_EQ(CFDictionaryGetCount(d), 0);
        EXPECT_EQ(CFGetRetainCount(key), 1);
        EXPECT_EQ(CFGetRetainCount(value3), 1);

        // RemoveAll releases everything, and the dictionary stays usable.
        CFDictionarySetValue(d, key, value1);
        CFDictionarySetValue(d, value2, value3);
        CFDictionaryRemoveAllValues(d);
        EXPECT_EQ(CFDictionaryGetCount(d), 0);
        EXPECT_EQ(CFGetRetainCount(key), 1);
        EXPECT_EQ(CFGetRetainCount(value1), 1);
        EXPECT_EQ(CFGetRetainCount(value2), 1);
        EXPECT_EQ(CFGetRetainCount(value3), 1);
        EXPECT_EQ(CFDictionaryGetValue(d, key), nullptr);
        CFDictionarySetValue(d, key, value1);
        EXPECT_EQ(CFDictionaryGetValue(d, key), value1.get());
        EXPECT_EQ(CFGetRetainCount(key), 2);
    }
    // Destruction releases what was left.
    EXPECT_EQ(CFGetRetainCount(key), 1);
    EXPECT_EQ(CFGetRetainCount(value1), 1);
}

TEST(DictionaryCreation, FirstOfDuplicateKeysWins) {
    auto a = text("a"), a2 = text("a"), b = text("b");
    auto v1 = text("1"), v2 = text("2"), v3 = text("3");
    const void* keys[] = {a.get(), b.get(), a2.get()};
    const void* values[] = {v1.get(), v2.get(), v3.get()};
    {
        auto d = own(CFDictionaryCreate(nullptr, keys, values, 3, &kCFTypeDictionaryKeyCallBacks,
                                        &kCFTypeDictionaryValueCallBacks));
        ASSERT_TRUE(d);
        EXPECT_FALSE(_CFDictionaryIsMutable(d));
        EXPECT_EQ(CFDictionaryGetCount(d), 2);
        EXPECT_EQ(CFDictionaryGetValue(d, a2), v1.get());
        Entries entries = entriesOf(d);
        EXPECT_TRUE((entries.keys[0] == a.get() && entries.keys[1] == b.get()) ||
                    (entries.keys[0] == b.get() && entries.keys[1] == a.get()));
        // The ignored duplicate was never retained.
        EXPECT_EQ(CFGetRetainCount(a), 2);
        EXPECT_EQ(CFGetRetainCount(a2), 1);
        EXPECT_EQ(CFGetRetainCount(v1), 2);
        EXPECT_EQ(CFGetRetainCount(v3), 1);
    }
    EXPECT_EQ(CFGetRetainCount(a), 1);
    EXPECT_EQ(CFGetRetainCount(v1), 1);

    auto empty = own(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));
    ASSERT_TRUE(empty);
    EXPECT_EQ(CFDictionaryGetCount(empty), 0);
    EXPECT_EQ(CFDictionaryGetValue(empty, a), nullptr);
    EXPECT_EQ(CFDictionaryCreate(kCFAllocatorNull, keys, values, 3, nullptr, nullptr), nullptr);
    EXPECT_EQ(CFDictionaryCreateMutable(kCFAllocatorNull, 0, nullptr, nullptr), nullptr);
}

TEST(DictionaryCallBacks, CopyStringKeysAreCopiesOfMutableKeys) {
    auto mutableKey = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppendCharacters(mutableKey, reinterpret_cast<const UniChar*>(u"abc"), 3);
    auto value = text("value");
    auto immutableKey = text("fixed");
    auto d = own(
        CFDictionaryCreateMutable(nullptr, 0, &kCFCopyStringDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(d, mutableKey, value);
    CFDictionarySetValue(d, immutableKey, value);
    EXPECT_EQ(CFGetRetainCount(mutableKey), 1);    // copied, not retained
    EXPECT_EQ(CFGetRetainCount(immutableKey), 2);  // an immutable key is its own copy

    // Changing the caller's key later does not reach the dictionary.
    CFStringAppendCharacters(mutableKey, reinterpret_cast<const UniChar*>(u"d"), 1);
    EXPECT_EQ(CFDictionaryGetValue(d, text("abc")), value.get());
    EXPECT_EQ(CFDictionaryGetValue(d, mutableKey), nullptr);
    Entries entries = entriesOf(d);
    for (const void* key : entries.keys) EXPECT_NE(key, mutableKey.get());
    std::set<std::string> keyTexts;
    for (const void* key : entries.keys) keyTexts.insert(ascii(static_cast<CFStringRef>(key)));
    EXPECT_EQ(keyTexts, (std::set<std::string>{"abc", "fixed"}));

    // Copies keep the callbacks: a mutable key is copied there too.
    auto copy = own(CFDictionaryCreateMutableCopy(nullptr, 0, d));
    CFDictionarySetValue(copy, mutableKey, value);
    EXPECT_EQ(CFGetRetainCount(mutableKey), 1);
    EXPECT_EQ(CFDictionaryGetValue(copy, text("abcd")), value.get());
}

TEST(DictionaryCallBacks, NullCallBacksStoreRawIntegers) {
    auto d = own(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    for (intptr_t i = 0; i < 100; ++i) CFDictionarySetValue(d, raw(i * 16), raw(i % 7));
    EXPECT_EQ(CFDictionaryGetCount(d), 100);
    EXPECT_EQ(CFDictionaryGetValue(d, raw(0)), raw(0));
    EXPECT_EQ(CFDictionaryGetValue(d, raw(16 * 99)), raw(99 % 7));
    EXPECT_EQ(CFDictionaryGetValue(d, raw(8)), nullptr);
    // Key 0 with value 0 is present, which only GetValueIfPresent can tell.
    const void* found = raw(-1);
    EXPECT_TRUE(CFDictionaryGetValueIfPresent(d, raw(0), &found));
    EXPECT_EQ(found, nullptr);
    EXPECT_FALSE(CFDictionaryGetValueIfPresent(d, raw(8), &found));
    EXPECT_TRUE(CFDictionaryGetValueIfPresent(d, raw(16), nullptr));
    EXPECT_EQ(CFDictionaryGetCountOfKey(d, raw(32)), 1);
    EXPECT_EQ(CFDictionaryGetCountOfKey(d, raw(33)), 0);
    EXPECT_EQ(CFDictionaryGetCountOfValue(d, raw(3)), 14);  // i = 3, 10, ..., 94
    EXPECT_TRUE(CFDictionaryContainsValue(d, raw(6)));
    EXPECT_FALSE(CFDictionaryContainsValue(d, raw(7)));
    EXPECT_TRUE(CFDictionaryContainsKey(d, raw(1584)));
    for (intptr_t i = 0; i < 100; i += 2) CFDictionaryRemoveValue(d, raw(i * 16));
    EXPECT_EQ(CFDictionaryGetCount(d), 50);
    for (intptr_t i = 0; i < 100; ++i) {
        EXPECT_EQ(CFDictionaryContainsKey(d, raw(i * 16)), i % 2 == 1) << i;
    }

    // Raw elements are described by address.
    auto one = own(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    CFDictionarySetValue(one, raw(42), raw(7));
    std::string description = ascii(own(CFCopyDescription(one)));
    EXPECT_NE(description.find(" : <0x2a> = <0x7>\n"), std::string::npos) << description;
}

namespace {

Boolean cStringEqual(const void* a, const void* b) {
    return std::strcmp(static_cast<const char*>(a), static_cast<const char*>(b)) == 0;
}

CFHashCode cStringHash(const void* s) {
    CFHashCode h = 0;
    for (const char* p = static_cast<const char*>(s); *p != 0; ++p) h = h * 31 + uint8_t(*p);
    return h;
}

}  // namespace

TEST(DictionaryCallBacks, PartialCallBacksAreCopiedAtCreation) {
    CFDictionaryKeyCallBacks keyCallBacks = {0, nullptr, nullptr, nullptr, cStringEqual, cStringHash};
    auto d = own(CFDictionaryCreateMutable(nullptr, 0, &keyCallBacks, nullptr));
    // Later changes to the caller's structure have no effect.
    keyCallBacks.equal = nullptr;
    keyCallBacks.hash = nullptr;
    char first[] = "alpha";
    char second[] = "alpha";
    CFDictionarySetValue(d, first, raw(1));
    CFDictionarySetValue(d, second, raw(2));  // equal by strcmp: replaces
    EXPECT_EQ(CFDictionaryGetCount(d), 1);
    EXPECT_EQ(CFDictionaryGetValue(d, "alpha"), raw(2));
    EXPECT_EQ(entriesOf(d).keys[0], static_cast<const void*>(second));
    // Values have no equal callback: identity only.
    EXPECT_EQ(CFDictionaryGetCountOfValue(d, raw(2)), 1);

    // With a hash but no equal callback, only the identical pointer matches.
    CFDictionaryKeyCallBacks hashOnly = {0, nullptr, nullptr, nullptr, nullptr, cStringHash};
    auto identity = own(CFDictionaryCreateMutable(nullptr, 0, &hashOnly, nullptr));
    CFDictionarySetValue(identity, first, raw(1));
    EXPECT_EQ(CFDictionaryGetValue(identity, second), nullptr);
    EXPECT_EQ(CFDictionaryGetValue(identity, first), raw(1));
}

TEST(DictionaryTable, ThousandsOfEntriesWithInterleavedRemovals) {
    // String keys, raw integer values.
    auto d = own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, nullptr));
    std::map<std::string, intptr_t> model;
    std::vector<Owned<CFStringRef>> keys;
    for (int i = 0; i < 6000; ++i) keys.push_back(text("key" + std::to_string(i)));
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 6000; ++i) {
            if ((i + round) % 3 == 0) {
                CFDictionaryRemoveValue(d, keys[size_t(i)]);
                model.erase("key" + std::to_string(i));
            } else {
                CFDictionarySetValue(d, keys[size_t(i)], raw(i * 10 + round));
                model["key" + std::to_string(i)] = i * 10 + round;
            }
            if (i % 5 == 0) {  // remove something added earlier in this round
                int earlier = i / 2;
                CFDictionaryRemoveValue(d, text("key" + std::to_string(earlier)));
                model.erase("key" + std::to_string(earlier));
            }
        }
        ASSERT_EQ(CFDictionaryGetCount(d), CFIndex(model.size())) << "round " << round;
        for (int i = 0; i < 6000; ++i) {
            std::string name = "key" + std::to_string(i);
            auto found = model.find(name);
            // Looked up through another object with the same text.
            const void* value = raw(-1);
            bool present = CFDictionaryGetValueIfPresent(d, text(name), &value);
            ASSERT_EQ(present, found != model.end()) << name;
            if (present) {
                ASSERT_EQ(value, raw(found->second)) << name;
            }
        }
        Entries entries = entriesOf(d);
        std::map<std::string, intptr_t> listed;
        for (size_t i = 0; i < entries.keys.size(); ++i) {
            std::string name = ascii(static_cast<CFStringRef>(entries.keys[i]));
            EXPECT_TRUE(listed.emplace(name, reinterpret_cast<intptr_t>(entries.values[i])).second)
                << "twice: " << name;
        }
        EXPECT_EQ(listed, model);
        Entries applied = appliedEntriesOf(d);
        EXPECT_EQ(applied.keys, entries.keys);
        EXPECT_EQ(applied.values, entries.values);
    }
    // Every key is held once by the test and once per presence.
    for (int i = 0; i < 6000; ++i) {
        bool present = model.count("key" + std::to_string(i)) != 0;
        ASSERT_EQ(CFGetRetainCount(keys[size_t(i)]), present ? 2 : 1) << i;
    }
}

TEST(DictionaryTable, CapacityIsOnlyAHint) {
    auto d = own(CFDictionaryCreateMutable(nullptr, 2, nullptr, nullptr));
    for (intptr_t i = 1; i <= 1000; ++i) CFDictionaryAddValue(d, raw(i), raw(i));
    EXPECT_EQ(CFDictionaryGetCount(d), 1000);
    auto big = own(CFDictionaryCreateMutable(nullptr, CFIndex(1) << 40, nullptr, nullptr));
    ASSERT_TRUE(big);
    CFDictionaryAddValue(big, raw(1), raw(2));
    EXPECT_EQ(CFDictionaryGetValue(big, raw(1)), raw(2));
    auto copy = own(CFDictionaryCreateMutableCopy(nullptr, 1, d));
    EXPECT_EQ(CFDictionaryGetCount(copy), 1000);
    EXPECT_TRUE(_CFDictionaryIsMutable(copy));
    EXPECT_FALSE(_CFDictionaryIsMutable(own(CFDictionaryCreateCopy(nullptr, copy))));
}

TEST(DictionaryEquality, CountKeysAndValuesDecide) {
    auto a = text("a"), b = text("b"), c = text("c");
    auto one = text("1"), two = text("2"), three = text("3");
    auto first = newTypeDictionary();
    CFDictionarySetValue(first, a, one);
    CFDictionarySetValue(first, b, two);
    CFDictionarySetValue(first, c, three);
    auto second = newTypeDictionary();
    CFDictionarySetValue(second, text("c"), text("3"));
    CFDictionarySetValue(second, text("b"), text("2"));
    CFDictionarySetValue(second, text("a"), text("1"));
    EXPECT_TRUE(CFEqual(first, second));
    EXPECT_TRUE(CFEqual(second, first));
    EXPECT_EQ(CFHash(first), 3u);
    EXPECT_EQ(CFHash(second), 3u);
    // Mutable or not does not matter.
    EXPECT_TRUE(CFEqual(own(CFDictionaryCreateCopy(nullptr, second)), first));

    CFDictionarySetValue(second, b, text("other"));
    EXPECT_FALSE(CFEqual(first, second));
    CFDictionarySetValue(second, b, two);
    CFDictionaryRemoveValue(second, c);
    EXPECT_FALSE(CFEqual(first, second));
    EXPECT_EQ(CFHash(second), 2u);
    CFDictionarySetValue(second, text("d"), three);  // same count, another key
    EXPECT_FALSE(CFEqual(first, second));

    auto empty1 = own(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));
    auto empty2 = newTypeDictionary();
    EXPECT_TRUE(CFEqual(empty1, empty2));
    EXPECT_EQ(CFHash(empty1), 0u);
    EXPECT_FALSE(CFEqual(empty1, a));  // no equality across types
}

TEST(DictionaryDescription, OneEntryExactly) {
    auto key = text("key");
    auto value = text("value");
    const void* keys[] = {key.get()};
    const void* values[] = {value.get()};
    auto d = own(
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    std::string description = ascii(own(CFCopyDescription(d)));
    std::smatch bucket;
    ASSERT_TRUE(std::regex_search(description, bucket, std::regex("\t([0-9]+) : ")));
    EXPECT_LT(std::stoi(bucket[1]), 8);  // the slot in a table sized for one entry
    std::string expected = "<CFBasicHash " + pointerText(d) + " [" + pointerText(kCFAllocatorSystemDefault) +
                           "]>{type = immutable dict, count = 1,\nentries =>\n\t" + bucket[1].str() + " : " +
                           stringDescription(key) + " = " + stringDescription(value) + "\n}\n";
    EXPECT_EQ(description, expected);

    auto empty = newTypeDictionary();
    EXPECT_EQ(ascii(own(CFCopyDescription(empty))), "<CFBasicHash " + pointerText(empty) + " [" +
                                                        pointerText(kCFAllocatorSystemDefault) +
                                                        "]>{type = mutable dict, count = 0,\nentries =>\n}\n");
}

TEST(DictionaryDescription, LargerDictionariesListEveryEntryInTableOrder) {
    auto d = newTypeDictionary();
    std::vector<Owned<CFStringRef>> objects;
    std::set<std::string> expectedLines;
    for (int i = 0; i < 20; ++i) {
        objects.push_back(text("k" + std::to_string(i)));
        objects.push_back(text("v" + std::to_string(i)));
        CFDictionarySetValue(d, objects[objects.size() - 2], objects.back());
        expectedLines.insert(stringDescription(objects[objects.size() - 2]) + " = " +
                             stringDescription(objects.back()));
    }
    std::string description = ascii(own(CFCopyDescription(d)));
    std::string header = "<CFBasicHash " + pointerText(d) + " [" + pointerText(kCFAllocatorSystemDefault) +
                         "]>{type = mutable dict, count = 20,\nentries =>\n";
    ASSERT_EQ(description.compare(0, header.size(), header), 0) << description;
    ASSERT_EQ(description.substr(description.size() - 2), "}\n");

    std::string body = description.substr(header.size(), description.size() - header.size() - 2);
    std::regex line("\t([0-9]+) : ([^\n]*)\n");
    std::set<std::string> lines;
    std::vector<int> buckets;
    std::string reassembled;
    for (std::sregex_iterator it(body.begin(), body.end(), line), end; it != end; ++it) {
        buckets.push_back(std::stoi((*it)[1]));
        lines.insert((*it)[2]);
        reassembled += it->str();
    }
    EXPECT_EQ(reassembled, body);  // nothing but entry lines
    EXPECT_EQ(lines, expectedLines);
    ASSERT_EQ(buckets.size(), 20u);
    for (size_t i = 1; i < buckets.size(); ++i) EXPECT_LT(buckets[i - 1], buckets[i]);

    // The lines come in the order GetKeysAndValues lists the entries.
    Entries entries = entriesOf(d);
    size_t position = 0;
    for (const void* key : entries.keys) {
        size_t found = description.find(stringDescription(static_cast<CFStringRef>(key)) + " = ", position);
        ASSERT_NE(found, std::string::npos);
        position = found;
    }
}

TEST(DictionaryMisuse, ImmutableAndInvalidDictionariesAreRefused) {
    auto key = text("key");
    auto value = text("value");
    const void* keys[] = {key.get()};
    const void* values[] = {value.get()};
    auto d = own(
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    auto writable = const_cast<CFMutableDictionaryRef>(d.get());
    auto other = text("other");
    testing::internal::CaptureStderr();
    CFDictionarySetValue(writable, other, value);
    CFDictionaryAddValue(writable, other, value);
    CFDictionaryReplaceValue(writable, key, other);
    CFDictionaryRemoveValue(writable, key);
    CFDictionaryRemoveAllValues(writable);
    std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_NE(reports.find("CFDictionary: CFDictionarySetValue(): Expect mutable dictionary\n"), std::string::npos);
    EXPECT_NE(reports.find("CFDictionary: CFDictionaryRemoveAllValues(): Expect mutable dictionary\n"),
              std::string::npos);
    EXPECT_EQ(std::count(reports.begin(), reports.end(), '\n'), 5);
    EXPECT_EQ(CFDictionaryGetCount(d), 1);
    EXPECT_EQ(CFDictionaryGetValue(d, key), value.get());
    EXPECT_EQ(CFGetRetainCount(key), 2);
    EXPECT_EQ(CFGetRetainCount(value), 2);
    EXPECT_EQ(CFGetRetainCount(other), 1);

    // NULL and objects of another type give neutral results.
    testing::internal::CaptureStderr();
    EXPECT_EQ(CFDictionaryGetCount(nullptr), 0);
    EXPECT_EQ(CFDictionaryGetValue(nullptr, key), nullptr);
    EXPECT_EQ(CFDictionaryGetCount(misused<CFDictionaryRef>(key)), 0);
    EXPECT_FALSE(CFDictionaryContainsKey(misused<CFDictionaryRef>(key), key));
    CFDictionarySetValue(misused<CFMutableDictionaryRef>(key), key, value);
    EXPECT_EQ(CFDictionaryCreateCopy(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFDictionaryCreate(nullptr, nullptr, nullptr, 2, nullptr, nullptr), nullptr);
    EXPECT_EQ(CFDictionaryCreateMutable(nullptr, -1, nullptr, nullptr), nullptr);
    EXPECT_FALSE(_CFDictionaryIsMutable(nullptr));
    CFDictionaryGetKeysAndValues(nullptr, nullptr, nullptr);
    reports = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(reports.begin(), reports.end(), '\n'), 10) << reports;
    EXPECT_NE(reports.find("CFDictionary: CFDictionaryGetCount(): NULL dictionary\n"), std::string::npos);
    EXPECT_EQ(CFGetRetainCount(value), 2);
}

namespace {

struct ApplyContext {
    CFMutableDictionaryRef dictionary;
    int calls;
};

void removeWhileApplying(const void* key, const void*, void* context) {
    auto* apply = static_cast<ApplyContext*>(context);
    ++apply->calls;
    CFDictionaryRemoveValue(apply->dictionary, key);
}

}  // namespace

TEST(DictionaryMisuse, ChangesDuringApplyAreRefused) {
    auto d = newTypeDictionary();
    for (int i = 0; i < 10; ++i) CFDictionarySetValue(d, text("k" + std::to_string(i)), text("v"));
    ApplyContext context{d, 0};
    testing::internal::CaptureStderr();
    CFDictionaryApplyFunction(d, removeWhileApplying, &context);
    std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_EQ(context.calls, 10);
    EXPECT_EQ(CFDictionaryGetCount(d), 10);
    EXPECT_NE(reports.find("CFDictionary: CFDictionaryRemoveValue(): dictionary changed while it is being enumerated"),
              std::string::npos);
    // Once the applier is done, changes are accepted again.
    CFDictionaryRemoveValue(d, text("k3"));
    EXPECT_EQ(CFDictionaryGetCount(d), 9);
}

TEST(DictionaryMisuse, SelfContainingDictionariesStayBounded) {
    auto key = text("self");
    auto first = newTypeDictionary();
    auto second = newTypeDictionary();
    CFDictionarySetValue(first, key, first);
    CFDictionarySetValue(second, key, second);
    testing::internal::CaptureStderr();
    auto description = own(CFCopyDescription(first));
    Boolean equal = CFEqual(first, second);
    std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_GT(CFStringGetLength(description), 0);
    EXPECT_FALSE(equal);
    EXPECT_NE(reports.find("nested too deeply"), std::string::npos);
    // Break the cycles so that both go away.
    CFDictionaryRemoveAllValues(first);
    CFDictionaryRemoveAllValues(second);
    EXPECT_EQ(CFGetRetainCount(first), 1);
}

TEST(DictionaryValues, CountOfValueUsesTheValueEqualCallBack) {
    auto d = newTypeDictionary();
    CFDictionarySetValue(d, text("a"), text("same"));
    CFDictionarySetValue(d, text("b"), text("same"));
    CFDictionarySetValue(d, text("c"), text("different"));
    EXPECT_EQ(CFDictionaryGetCountOfValue(d, text("same")), 2);
    EXPECT_EQ(CFDictionaryGetCountOfValue(d, text("different")), 1);
    EXPECT_EQ(CFDictionaryGetCountOfValue(d, text("none")), 0);
    EXPECT_TRUE(CFDictionaryContainsValue(d, text("different")));
    EXPECT_FALSE(CFDictionaryContainsValue(d, text("none")));
    EXPECT_EQ(CFDictionaryGetCountOfKey(d, text("a")), 1);
    EXPECT_EQ(CFDictionaryGetCountOfKey(d, text("z")), 0);
    // Either output array may be left out.
    std::vector<const void*> values(3);
    CFDictionaryGetKeysAndValues(d, nullptr, values.data());
    EXPECT_EQ(values, entriesOf(d).values);
}
