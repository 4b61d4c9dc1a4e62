// HVData and HVMutableData: creation, sharing and copying rules, the
// hexadecimal text form and reading files.
#include <halvane/collections/HVData.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

#include "support/LogCapture.h"

namespace {

std::string bytesOf(const HVData& data) {
    if (data.Bytes() == nullptr) return std::string();
    return std::string(static_cast<const char*>(data.Bytes()), size_t(data.Length()));
}

HVData data(const std::string& bytes) { return HVData::DataWithBytesOfLength(bytes.data(), bytes.size()); }

}  // namespace

TEST(Data, EmptyAndNullBuffers) {
    HVData empty;
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.Ref(), HVData::SharedEmptyObject());
    EXPECT_EQ(empty.Length(), 0u);
    EXPECT_EQ(HVData::DataWithBytesOfLength(nullptr, 5).Length(), 0u);
    EXPECT_EQ(HVData::DataWithBytesOfLength("abc", 0).Ref(), HVData::SharedEmptyObject());
    EXPECT_NE(HVMutableData::SharedEmptyObject(), HVData::SharedEmptyObject());
    EXPECT_TRUE(_CFDataIsMutable(static_cast<CFDataRef>(HVMutableData::SharedEmptyObject())));

    HVData null(HVObject{});
    EXPECT_EQ(null.Ref(), nullptr);
    EXPECT_TRUE(null.IsEmpty());
    EXPECT_EQ(null.Length(), 0u);
    EXPECT_EQ(null.Bytes(), nullptr);
}

TEST(Data, ImmutableBuffersNeverShareAMutableOne) {
    HVMutableData buffer;
    buffer.AppendBytesOfLength("abc", 3);
    // The shared empty buffer was not written: a fresh one was made.
    EXPECT_EQ(CFDataGetLength(static_cast<CFDataRef>(HVMutableData::SharedEmptyObject())), 0);

    HVData frozen(buffer);
    EXPECT_NE(frozen.Ref(), buffer.Ref());
    buffer.AppendBytesOfLength("def", 3);
    EXPECT_EQ(bytesOf(frozen), "abc");
    EXPECT_EQ(bytesOf(buffer), "abcdef");

    // Mutable copies of one another share one buffer.
    HVMutableData sharing(buffer);
    sharing.AppendBytesOfLength("!", 1);
    EXPECT_EQ(bytesOf(buffer), "abcdef!");
    EXPECT_EQ(buffer.RetainCount(), 2u);

    HVData copy = buffer.Copy();
    buffer.AppendBytesOfLength("?", 1);
    EXPECT_EQ(bytesOf(copy), "abcdef!");
}

TEST(Data, SubdataAndByteCopies) {
    HVData source = data("0123456789");
    EXPECT_EQ(bytesOf(source.SubdataWithRange(HVRange(2, 3))), "234");
    EXPECT_EQ(bytesOf(source.SubdataWithRange(HVRange(8, 100))), "89");
    EXPECT_TRUE(source.SubdataWithRange(HVRange(10, 1)).IsEmpty());
    EXPECT_TRUE(source.SubdataWithRange(HVRange(3, 0)).IsEmpty());
    char out[11] = {};
    source.GetBytesWithRange(out, HVRange(4, 2));
    EXPECT_EQ(std::string(out, 2), "45");
    source.GetBytesWithLength(out, 3);
    EXPECT_EQ(std::string(out, 3), "012");
    source.GetBytes(out);
    EXPECT_EQ(std::string(out, 10), "0123456789");
}

TEST(Data, MutableOperations) {
    HVMutableData buffer = HVMutableData::DataWithLength(4);
    EXPECT_EQ(bytesOf(buffer), std::string(4, '\0'));
    buffer.ReplaceBytesInRangeWithBytes(HVRange(1, 2), "xy");
    EXPECT_EQ(bytesOf(buffer), std::string("\0xy\0", 4));
    buffer.ReplaceBytesInRangeWithBytesOfLength(HVRange(0, 1), "abc", 3);
    EXPECT_EQ(bytesOf(buffer), std::string("abcxy\0", 6));
    buffer.ResetBytesInRange(HVRange(0, 2));
    EXPECT_EQ(bytesOf(buffer), std::string("\0\0cxy\0", 6));
    buffer.SetLength(2);
    EXPECT_EQ(buffer.Length(), 2u);
    buffer.IncreaseLengthBy(0);
    buffer.SetLength(2);
    buffer.IncreaseLengthBy(2);
    EXPECT_EQ(bytesOf(buffer), std::string(4, '\0'));

    HVMutableData empty;
    EXPECT_EQ(empty.MutableBytes(), nullptr);
    empty.IncreaseLengthBy(3);
    EXPECT_EQ(empty.Length(), 3u);
    EXPECT_NE(empty.MutableBytes(), nullptr);
}

TEST(Data, CapacityIsAFixedMaximum) {
    HVMutableData tooSmall;
    tooSmall.InitWithCapacity(4);
    tooSmall.AppendBytesOfLength("efghijkl", 8);  // refused by the platform
    EXPECT_EQ(tooSmall.Length(), 0u);

    HVMutableData fixed;
    fixed.InitWithCapacity(4);
    fixed.AppendBytesOfLength("abcd", 4);
    fixed.AppendBytesOfLength("efghijkl", 8);  // refused by the platform
    EXPECT_EQ(bytesOf(fixed), "abcd");

    HVMutableData growable;
    growable.InitWithLength(4);
    growable.AppendBytesOfLength("efghijkl", 8);
    EXPECT_EQ(growable.Length(), 12u);
}

TEST(Data, HexadecimalTextForm) {
    HVData bytes = data(std::string("\x00\x7F\xAB", 3));
    EXPECT_EQ(std::string(bytes.Serialize()), "<007fab>");
    EXPECT_EQ(std::string(HVData().Serialize()), "<>");
    EXPECT_EQ(std::string(data("\x0A\xFF").Serialize()), "<0aff>");

    HVData read;
    read.Deserialize("<007fab>");
    EXPECT_EQ(bytesOf(read), std::string("\x00\x7F\xAB", 3));
    read.Deserialize("007fab");
    EXPECT_TRUE(read.IsEmpty());
    read.Deserialize("<abc>");
    EXPECT_EQ(bytesOf(read), "\xAB");
    // Upper-case digits are not rejected: 'A' counts as -22.
    read.Deserialize("<0A>");
    EXPECT_EQ(bytesOf(read), std::string(1, char(uint8_t(0 * 16 - 22))));
}

TEST(Data, StringsInEncodings) {
    EXPECT_EQ(bytesOf(HVData(HVString("h\xC3\xA9"))), "h\xC3\xA9");
    EXPECT_EQ(bytesOf(HVData::DataWithStringUsingEncoding(HVString("h\xC3\xA9"), HVASCIIStringEncoding)), "h?");
    EXPECT_EQ(bytesOf(HVData::DataContainingCStringWithStringUsingEncoding(HVString("hi"), HVASCIIStringEncoding)),
              std::string("hi\0", 3));
    EXPECT_TRUE(HVData::DataWithStringUsingEncoding(HVString(""), HVUTF8StringEncoding).IsEmpty());
}

TEST(Data, ConversionFromObjects) {
    HVData source = data("abc");
    HVObject plain = HVObject::Create(source.Ref());
    EXPECT_EQ(HVData(plain).Ref(), source.Ref());

    HVObject untyped;
    untyped.Assign(source.Ref());
    EXPECT_EQ(HVData(untyped).Ref(), source.Ref());

    hvtest::LogCapture log;
    HVData fromString(static_cast<const HVObject&>(HVString("text")));
    EXPECT_EQ(fromString.Ref(), HVData::SharedEmptyObject());
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "Failed Assert! (0) - HVData::HVData(const HVObject& Object) parameter type unhandled.    "
              "Function:HVData::HVData File:HVData Line:248");

    log.clear();
    int seven = 7;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &seven);
    HVMutableData fromNumber(HVObject::Create(number));
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0],
              "Failed Assert! (0) - HVMutableData::HVMutableData(const HVObject& Object) parameter type unhandled.    "
              "Function:HVMutableData::HVMutableData File:HVMutableData Line:99");
    CFRelease(number);

    HVMutableData fromData(static_cast<const HVObject&>(source));
    EXPECT_NE(fromData.Ref(), source.Ref());
    EXPECT_EQ(bytesOf(fromData), "abc");
    EXPECT_EQ(bytesOf(HVMutableData(static_cast<const HVObject&>(HVString("s")))), "s");
}

TEST(Data, ReadingFiles) {
    char directory[] = "/tmp/halvane-data-XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    std::string path = std::string(directory) + "/bytes.bin";
    {
        std::ofstream file(path, std::ios::binary);
        file << std::string("file\0contents", 13);
    }
    EXPECT_EQ(bytesOf(HVData::DataWithContentsOfFile(HVString(path))), std::string("file\0contents", 13));

    // A missing file leaves the receiver as it was.
    HVData kept = data("kept");
    kept.InitWithContentsOfFile(HVString(path + ".missing"));
    EXPECT_EQ(bytesOf(kept), "kept");
    kept.InitWithContentsOfFile(HVString(directory));
    EXPECT_EQ(bytesOf(kept), "kept");

    HVMutableData buffer;
    buffer.InitWithContentsOfFile(HVString(path));
    EXPECT_TRUE(buffer.IsMutable());
    buffer.AppendBytesOfLength("!", 1);
    EXPECT_EQ(buffer.Length(), 14u);

    EXPECT_EQ(std::string(HVString::StringWithContentsOfFileUsingEncoding(HVString(path), HVUTF8StringEncoding)),
              "file");
    unlink(path.c_str());
    rmdir(directory);
}
