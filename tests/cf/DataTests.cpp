// CFData: creation and copies, the no-copy deallocators, fixed capacities,
// growth and splicing of mutable data, equality, hashing and descriptions.
#include "CFTestSupport.h"
#include "MisuseReports.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <string>
#include <vector>

using namespace cftest;

namespace {

std::vector<UInt8> bytesOf(CFDataRef d) {
    std::vector<UInt8> out(size_t(CFDataGetLength(d)));
    if (!out.empty()) CFDataGetBytes(d, CFRangeMake(0, CFIndex(out.size())), out.data());
    return out;
}

std::string textOf(CFDataRef d) {
    std::vector<UInt8> bytes = bytesOf(d);
    return std::string(bytes.begin(), bytes.end());
}

Owned<CFDataRef> dataOf(const std::string& text) {
    return own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(text.data()), CFIndex(text.size())));
}

Owned<CFMutableDataRef> mutableDataOf(const std::string& text, CFIndex capacity = 0) {
    auto d = own(CFDataCreateMutable(nullptr, capacity));
    CFDataAppendBytes(d, reinterpret_cast<const UInt8*>(text.data()), CFIndex(text.size()));
    return d;
}

const UInt8* u8(const char* text) {
    return reinterpret_cast<const UInt8*>(text);
}

std::string prefix(CFTypeRef cf) {
    char text[96];
    std::snprintf(text, sizeof text, "<CFData 0x%lx [0x%lx]>", (unsigned long)cf,
                  (unsigned long)kCFAllocatorSystemDefault);
    return text;
}

}  // namespace

TEST(DataCreation, BytesAreCopiedAndEmptyDataHasNoPointer) {
    UInt8 source[] = {1, 2, 3};
    auto d = own(CFDataCreate(nullptr, source, 3));
    ASSERT_TRUE(d);
    source[0] = 9;
    EXPECT_EQ(bytesOf(d), (std::vector<UInt8>{1, 2, 3}));
    EXPECT_NE(CFDataGetBytePtr(d), source);
    EXPECT_EQ(CFDataGetBytePtr(d)[2], 3);
    EXPECT_EQ(CFGetRetainCount(d), 1);
    EXPECT_EQ(CFGetTypeID(d), 20u);
    EXPECT_EQ(CFDataGetTypeID(), 20u);
    EXPECT_FALSE(_CFDataIsMutable(d));
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(20))), "CFData");

    auto empty = own(CFDataCreate(nullptr, nullptr, 0));
    ASSERT_TRUE(empty);
    EXPECT_EQ(CFDataGetLength(empty), 0);
    EXPECT_EQ(CFDataGetBytePtr(empty), nullptr);
    auto emptyFromPointer = own(CFDataCreate(nullptr, source, 0));
    EXPECT_EQ(CFDataGetBytePtr(emptyFromPointer), nullptr);

    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFDataCreate(nullptr, nullptr, 5), nullptr);
        EXPECT_EQ(CFDataCreate(nullptr, source, -1), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
    EXPECT_EQ(CFDataCreate(kCFAllocatorNull, source, 3), nullptr);
}

TEST(DataCreation, NoCopyHonoursTheDeallocator) {
    // kCFAllocatorNull: the bytes stay the caller's and are used in place.
    UInt8 stackBytes[] = {'x', 'y'};
    {
        auto d = own(CFDataCreateWithBytesNoCopy(nullptr, stackBytes, 2, kCFAllocatorNull));
        EXPECT_EQ(CFDataGetBytePtr(d), stackBytes);
        stackBytes[1] = 'z';
        EXPECT_EQ(textOf(d), "xz");
    }
    EXPECT_EQ(stackBytes[0], 'x');

    // NULL (the default allocator), kCFAllocatorDefault and kCFAllocatorMalloc
    // free the buffer with the data; the leak checker of the test build fails
    // the run if one of them does not.
    for (CFAllocatorRef deallocator : {CFAllocatorRef(nullptr), kCFAllocatorSystemDefault, kCFAllocatorMalloc}) {
        auto* heapBytes = static_cast<UInt8*>(std::malloc(4));
        std::memcpy(heapBytes, "heap", 4);
        CFDataRef d = CFDataCreateWithBytesNoCopy(nullptr, heapBytes, 4, deallocator);
        EXPECT_EQ(CFDataGetBytePtr(d), heapBytes);
        EXPECT_EQ(textOf(d), "heap");
        CFRelease(d);
    }

    // An empty no-copy data shows no bytes but still frees the buffer it was given.
    auto* emptyBytes = static_cast<UInt8*>(std::malloc(1));
    CFDataRef empty = CFDataCreateWithBytesNoCopy(nullptr, emptyBytes, 0, nullptr);
    EXPECT_EQ(CFDataGetBytePtr(empty), nullptr);
    CFRelease(empty);

    std::string reports =
        reportsOf([] { EXPECT_EQ(CFDataCreateWithBytesNoCopy(nullptr, nullptr, 3, nullptr), nullptr); });
    EXPECT_EQ(lineCount(reports), 1);
}

TEST(DataCopies, ImmutableOwnersAreSharedEverythingElseIsCopied) {
    auto original = dataOf("abc");
    auto copy = own(CFDataCreateCopy(nullptr, original));
    EXPECT_EQ(copy.get(), original.get());
    EXPECT_EQ(CFGetRetainCount(original), 2);
    auto viaSystemDefault = own(CFDataCreateCopy(kCFAllocatorSystemDefault, original));
    EXPECT_EQ(viaSystemDefault.get(), original.get());

    // Another allocator asks for a data of its own.
    auto viaMalloc = own(CFDataCreateCopy(kCFAllocatorMalloc, original));
    EXPECT_NE(viaMalloc.get(), original.get());
    EXPECT_EQ(textOf(viaMalloc), "abc");

    // Bytes the data does not own may change under it: the copy takes them.
    UInt8 borrowed[] = {'b', 'o', 'r'};
    auto borrowing = own(CFDataCreateWithBytesNoCopy(nullptr, borrowed, 3, kCFAllocatorNull));
    auto borrowedCopy = own(CFDataCreateCopy(nullptr, borrowing));
    EXPECT_NE(borrowedCopy.get(), borrowing.get());
    borrowed[0] = 'B';
    EXPECT_EQ(textOf(borrowedCopy), "bor");
    EXPECT_EQ(textOf(borrowing), "Bor");

    // Bytes handed over with a deallocator belong to the data: shared.
    auto* handedOver = static_cast<UInt8*>(std::malloc(2));
    auto owning = own(CFDataCreateWithBytesNoCopy(nullptr, handedOver, 2, nullptr));
    auto owningCopy = own(CFDataCreateCopy(nullptr, owning));
    EXPECT_EQ(owningCopy.get(), owning.get());

    // A mutable data gives an independent immutable copy.
    auto growing = mutableDataOf("xyz");
    auto frozen = own(CFDataCreateCopy(nullptr, growing));
    EXPECT_NE(frozen.get(), static_cast<CFDataRef>(growing.get()));
    EXPECT_FALSE(_CFDataIsMutable(frozen));
    CFDataAppendBytes(growing, u8("!"), 1);
    EXPECT_EQ(textOf(frozen), "xyz");
    EXPECT_EQ(textOf(growing), "xyz!");

    auto mutableCopy = own(CFDataCreateMutableCopy(nullptr, 0, original));
    EXPECT_TRUE(_CFDataIsMutable(mutableCopy));
    CFDataAppendBytes(mutableCopy, u8("d"), 1);
    EXPECT_EQ(textOf(mutableCopy), "abcd");
    EXPECT_EQ(textOf(original), "abc");

    std::string reports = reportsOf([&] {
        EXPECT_EQ(CFDataCreateCopy(nullptr, nullptr), nullptr);
        EXPECT_EQ(CFDataCreateMutableCopy(nullptr, 0, nullptr), nullptr);
        EXPECT_EQ(CFDataCreateCopy(nullptr, reinterpret_cast<CFDataRef>(CFSTR("not data"))), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 3);
}

TEST(DataCapacity, NonZeroCapacityIsAHardLimit) {
    auto d = own(CFDataCreateMutable(nullptr, 4));
    ASSERT_TRUE(d);
    CFDataAppendBytes(d, u8("abcd"), 4);
    EXPECT_EQ(textOf(d), "abcd");

    std::string reports = reportsOf([&] { CFDataAppendBytes(d, u8("e"), 1); });
    EXPECT_NE(reports.find("fixed-capacity CFMutableData is full"), std::string::npos) << reports;
    EXPECT_NE(reports.find("CFDataAppendBytes"), std::string::npos) << reports;
    EXPECT_EQ(lineCount(reports), 1);
    EXPECT_EQ(textOf(d), "abcd");

    // Every way of growing is refused, and each says so once.
    reports = reportsOf([&] {
        CFDataSetLength(d, 5);
        CFDataIncreaseLength(d, 1);
        CFDataReplaceBytes(d, CFRangeMake(0, 1), u8("xy"), 2);
        CFDataReplaceBytes(d, CFRangeMake(4, 0), u8("z"), 1);
    });
    EXPECT_EQ(lineCount(reports), 4);
    EXPECT_EQ(occurrences(reports, "fixed-capacity CFMutableData is full"), 4) << reports;
    EXPECT_EQ(textOf(d), "abcd");
    EXPECT_EQ(CFDataGetLength(d), 4);

    // Changes that stay within the capacity are fine.
    CFDataReplaceBytes(d, CFRangeMake(1, 2), u8("XY"), 2);
    EXPECT_EQ(textOf(d), "aXYd");
    CFDataDeleteBytes(d, CFRangeMake(0, 2));
    CFDataAppendBytes(d, u8("12"), 2);
    EXPECT_EQ(textOf(d), "Yd12");

    // A mutable copy needs room for the whole source.
    auto source = dataOf("12345");
    reports = reportsOf([&] {
        EXPECT_EQ(CFDataCreateMutableCopy(nullptr, 4, source), nullptr);
        EXPECT_EQ(CFDataCreateMutableCopy(nullptr, -1, source), nullptr);
        EXPECT_EQ(CFDataCreateMutable(nullptr, -1), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 3);
    auto exact = own(CFDataCreateMutableCopy(nullptr, 5, source));
    ASSERT_TRUE(exact);
    EXPECT_EQ(textOf(exact), "12345");
    reports = reportsOf([&] { CFDataIncreaseLength(exact, 1); });
    EXPECT_NE(reports.find("fixed-capacity CFMutableData is full"), std::string::npos);
    EXPECT_EQ(CFDataGetLength(exact), 5);
}

TEST(DataGrowth, NewAndReexposedBytesAreZero) {
    auto d = mutableDataOf("ab");
    CFDataSetLength(d, 5);
    EXPECT_EQ(bytesOf(d), (std::vector<UInt8>{'a', 'b', 0, 0, 0}));

    std::memset(CFDataGetMutableBytePtr(d), 0xFF, 5);
    CFDataSetLength(d, 1);
    EXPECT_EQ(bytesOf(d), (std::vector<UInt8>{0xFF}));
    CFDataSetLength(d, 4);
    EXPECT_EQ(bytesOf(d), (std::vector<UInt8>{0xFF, 0, 0, 0}));
    CFDataIncreaseLength(d, 2);
    EXPECT_EQ(bytesOf(d), (std::vector<UInt8>{0xFF, 0, 0, 0, 0, 0}));
    CFDataSetLength(d, 0);
    EXPECT_EQ(CFDataGetLength(d), 0);

    std::string reports = reportsOf([&] {
        CFDataIncreaseLength(d, -1);
        CFDataSetLength(d, -3);
    });
    EXPECT_EQ(lineCount(reports), 2);
    EXPECT_EQ(CFDataGetLength(d), 0);
}

TEST(DataGrowth, AppendingByteByByteGrowsGeometrically) {
    auto d = own(CFDataCreateMutable(nullptr, 0));
    const UInt8* last = nullptr;
    long moves = 0;
    for (int i = 0; i < 100000; ++i) {
        UInt8 byte = UInt8(i * 7);
        CFDataAppendBytes(d, &byte, 1);
        if (CFDataGetBytePtr(d) != last) {
            ++moves;
            last = CFDataGetBytePtr(d);
        }
    }
    // Doubling needs about log2(100000) reallocations; growing by a constant
    // step would need thousands.
    EXPECT_LE(moves, 20);
    ASSERT_EQ(CFDataGetLength(d), 100000);
    const UInt8* bytes = CFDataGetBytePtr(d);
    bool allThere = true;
    for (int i = 0; i < 100000; ++i) allThere = allThere && bytes[i] == UInt8(i * 7);
    EXPECT_TRUE(allThere);
}

TEST(DataSplicing, ReplaceDeleteAndSourcesInsideTheData) {
    auto d = mutableDataOf("0123456789");
    CFDataReplaceBytes(d, CFRangeMake(2, 3), u8("ab"), 2);
    EXPECT_EQ(textOf(d), "01ab56789");
    CFDataReplaceBytes(d, CFRangeMake(0, 0), u8("<<"), 2);
    EXPECT_EQ(textOf(d), "<<01ab56789");
    CFDataReplaceBytes(d, CFRangeMake(11, 0), u8(">>"), 2);
    EXPECT_EQ(textOf(d), "<<01ab56789>>");
    CFDataReplaceBytes(d, CFRangeMake(2, 9), nullptr, 0);
    EXPECT_EQ(textOf(d), "<<>>");
    CFDataDeleteBytes(d, CFRangeMake(1, 2));
    EXPECT_EQ(textOf(d), "<>");

    // Sources inside the data itself, overlapping the replaced range, and
    // large enough to make the buffer move.
    auto self = mutableDataOf("abcdef");
    CFDataReplaceBytes(self, CFRangeMake(0, 2), CFDataGetBytePtr(self) + 2, 4);
    EXPECT_EQ(textOf(self), "cdefcdef");
    CFDataReplaceBytes(self, CFRangeMake(2, 4), CFDataGetBytePtr(self), 8);
    EXPECT_EQ(textOf(self), "cdcdefcdefef");
    std::string expected = textOf(self);
    for (int i = 0; i < 6; ++i) {
        CFDataAppendBytes(self, CFDataGetBytePtr(self), CFDataGetLength(self));
        expected += expected;
    }
    EXPECT_EQ(textOf(self), expected);

    // Out-of-range and malformed arguments change nothing.
    auto small = mutableDataOf("abc");
    std::string reports = reportsOf([&] {
        CFDataReplaceBytes(small, CFRangeMake(4, 0), u8("x"), 1);
        CFDataReplaceBytes(small, CFRangeMake(2, 2), u8("x"), 1);
        CFDataReplaceBytes(small, CFRangeMake(-1, 1), u8("x"), 1);
        CFDataReplaceBytes(small, CFRangeMake(1, -1), u8("x"), 1);
        CFDataReplaceBytes(small, CFRangeMake(1, LONG_MAX), u8("x"), 1);
        CFDataReplaceBytes(small, CFRangeMake(0, 1), nullptr, 1);
        CFDataReplaceBytes(small, CFRangeMake(0, 1), u8("x"), -1);
        CFDataDeleteBytes(small, CFRangeMake(3, 1));
        CFDataAppendBytes(small, nullptr, 2);
    });
    EXPECT_EQ(lineCount(reports), 9);
    EXPECT_EQ(textOf(small), "abc");
    CFDataAppendBytes(small, nullptr, 0);
    EXPECT_EQ(textOf(small), "abc");
}

TEST(DataAccess, RangesImmutabilityAndWrongArguments) {
    auto d = dataOf("hello");
    UInt8 buffer[5] = {'-', '-', '-', '-', '-'};
    CFDataGetBytes(d, CFRangeMake(1, 3), buffer);
    EXPECT_EQ(std::string(buffer, buffer + 5), "ell--");

    auto mutableData = mutableDataOf("m");
    std::string reports = reportsOf([&] {
        CFDataGetBytes(d, CFRangeMake(3, 3), buffer);
        CFDataGetBytes(d, CFRangeMake(-1, 2), buffer);
        CFDataGetBytes(d, CFRangeMake(0, 2), nullptr);
        // Changes to an immutable data are refused.
        auto asMutable = const_cast<CFMutableDataRef>(d.get());
        EXPECT_EQ(CFDataGetMutableBytePtr(asMutable), nullptr);
        CFDataAppendBytes(asMutable, u8("!"), 1);
        CFDataSetLength(asMutable, 1);
        CFDataIncreaseLength(asMutable, 1);
        CFDataDeleteBytes(asMutable, CFRangeMake(0, 1));
        // NULL and objects of another type give neutral results.
        EXPECT_EQ(CFDataGetLength(nullptr), 0);
        EXPECT_EQ(CFDataGetBytePtr(nullptr), nullptr);
        EXPECT_FALSE(_CFDataIsMutable(nullptr));
        EXPECT_EQ(CFDataGetLength(reinterpret_cast<CFDataRef>(CFSTR("text"))), 0);
        CFDataAppendBytes(reinterpret_cast<CFMutableDataRef>(const_cast<__CFString*>(CFSTR("text"))), u8("x"), 1);
    });
    EXPECT_EQ(lineCount(reports), 13) << reports;
    EXPECT_NE(reports.find("CFData: CFDataAppendBytes(): Expect mutable data"), std::string::npos) << reports;
    EXPECT_EQ(std::string(buffer, buffer + 5), "ell--");
    EXPECT_EQ(textOf(d), "hello");
    EXPECT_EQ(ascii(CFSTR("text")), "text");

    EXPECT_EQ(CFDataGetMutableBytePtr(mutableData), CFDataGetBytePtr(mutableData));
    EXPECT_EQ(CFDataGetMutableBytePtr(mutableData)[0], 'm');
}

TEST(DataEquality, SameBytesAreEqualAndHashAlike) {
    auto a = dataOf("payload");
    auto b = mutableDataOf("payload");
    auto shorter = dataOf("payloa");
    auto different = dataOf("paylOad");
    EXPECT_TRUE(CFEqual(a, b));
    EXPECT_TRUE(CFEqual(b, a));
    EXPECT_EQ(CFHash(a), CFHash(b));
    EXPECT_FALSE(CFEqual(a, shorter));
    EXPECT_FALSE(CFEqual(a, different));
    EXPECT_TRUE(CFEqual(dataOf(""), mutableDataOf("")));
    EXPECT_FALSE(CFEqual(dataOf("abc"), CFSTR("abc")));

    // The ELF hash of at most the first 80 bytes.
    EXPECT_EQ(CFHash(dataOf("")), 0u);
    EXPECT_EQ(CFHash(dataOf("a")), 97u);
    EXPECT_EQ(CFHash(dataOf("abc")), 26499u);
    EXPECT_EQ(CFHash(dataOf("Hello, world")), 177364020u);
    std::string counting;
    for (int i = 0; i < 100; ++i) counting.push_back(char(i));
    EXPECT_EQ(CFHash(dataOf(counting.substr(0, 32))), 95443711u);
    EXPECT_EQ(CFHash(dataOf(counting)), 192585359u);
    EXPECT_EQ(CFHash(dataOf(counting.substr(0, 80))), 192585359u);
    std::string changedAfter80 = counting;
    changedAfter80[90] = 'x';
    EXPECT_EQ(CFHash(dataOf(changedAfter80)), CFHash(dataOf(counting)));
    EXPECT_FALSE(CFEqual(dataOf(changedAfter80), dataOf(counting)));
    std::string changedAt79 = counting;
    changedAt79[79] = 'x';
    EXPECT_NE(CFHash(dataOf(changedAt79)), CFHash(dataOf(counting)));
}

TEST(DataDescription, LengthCapacityAndBytes) {
    auto three = own(CFDataCreate(nullptr, std::vector<UInt8>{1, 2, 0xAB}.data(), 3));
    EXPECT_EQ(ascii(own(CFCopyDescription(three))), prefix(three) + "{length = 3, capacity = 3, bytes = 0x0102ab}");

    auto empty = dataOf("");
    EXPECT_EQ(ascii(own(CFCopyDescription(empty))), prefix(empty) + "{length = 0, capacity = 0, bytes = 0x}");

    std::vector<UInt8> counting(32);
    for (int i = 0; i < 32; ++i) counting[size_t(i)] = UInt8(i);
    auto twentyFour = own(CFDataCreate(nullptr, counting.data(), 24));
    EXPECT_EQ(ascii(own(CFCopyDescription(twentyFour))),
              prefix(twentyFour) +
                  "{length = 24, capacity = 24, bytes = 0x000102030405060708090a0b0c0d0e0f1011121314151617}");
    // Beyond 24 bytes: the first 16 and the last 8.
    auto twentyFive = own(CFDataCreate(nullptr, counting.data(), 25));
    EXPECT_EQ(ascii(own(CFCopyDescription(twentyFive))),
              prefix(twentyFive) +
                  "{length = 25, capacity = 25, bytes = 0x000102030405060708090a0b0c0d0e0f ... 1112131415161718}");
    auto thirtyTwo = own(CFDataCreate(nullptr, counting.data(), 32));
    EXPECT_EQ(ascii(own(CFCopyDescription(thirtyTwo))),
              prefix(thirtyTwo) +
                  "{length = 32, capacity = 32, bytes = 0x000102030405060708090a0b0c0d0e0f ... 18191a1b1c1d1e1f}");

    // A fixed-capacity data reports its capacity; a growable one its room.
    auto fixed = mutableDataOf("\x0f", 4);
    EXPECT_EQ(ascii(own(CFCopyDescription(fixed))), prefix(fixed) + "{length = 1, capacity = 4, bytes = 0x0f}");
    auto growable = mutableDataOf("\x10\x20");
    EXPECT_TRUE(std::regex_match(ascii(own(CFCopyDescription(growable))),
                                 std::regex("<CFData 0x[0-9a-f]+ \\[0x[0-9a-f]+\\]>\\{length = 2, capacity = "
                                            "[0-9]+, bytes = 0x1020\\}")));
}
