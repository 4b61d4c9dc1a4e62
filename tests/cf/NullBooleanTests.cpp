// kCFNull and the two booleans: immortal singletons, their identity-based
// equality, hashes and descriptions.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

using namespace cftest;

namespace {

std::string address(const void* p) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return text;
}

// What "%@" prints, through the class record.
std::string formattingDescription(CFTypeRef cf) {
    const CFRuntimeClass* cls = _CFRuntimeGetClassWithTypeID(CFGetTypeID(cf));
    return ascii(own(cls->copyFormattingDesc(cf, nullptr)));
}

}  // namespace

TEST(Null, SingleImmortalInstance) {
    EXPECT_EQ(CFNullGetTypeID(), 16u);
    EXPECT_EQ(CFGetTypeID(kCFNull), CFNullGetTypeID());
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFNullGetTypeID()))), "CFNull");
    EXPECT_EQ(CFGetRetainCount(kCFNull), kImmortal);
    EXPECT_EQ(CFRetain(kCFNull), kCFNull);
    CFRelease(kCFNull);
    CFRelease(kCFNull);
    EXPECT_EQ(CFGetRetainCount(kCFNull), kImmortal);

    EXPECT_TRUE(CFEqual(kCFNull, kCFNull));
    EXPECT_FALSE(CFEqual(kCFNull, kCFBooleanFalse));
    EXPECT_FALSE(CFEqual(kCFNull, CFSTR("null")));
    EXPECT_EQ(CFHash(kCFNull), CFHashCode(reinterpret_cast<uintptr_t>(kCFNull)));
}

TEST(Null, Descriptions) {
    EXPECT_EQ(formattingDescription(kCFNull), "null");
    EXPECT_EQ(ascii(own(CFCopyDescription(kCFNull))),
              "<CFNull " + address(kCFNull) + " [" + address(kCFAllocatorSystemDefault) + "]>");
}

TEST(Boolean, TwoImmortalInstances) {
    EXPECT_EQ(CFBooleanGetTypeID(), 21u);
    EXPECT_EQ(ascii(own(CFCopyTypeIDDescription(CFBooleanGetTypeID()))), "CFBoolean");
    EXPECT_NE(kCFBooleanTrue, kCFBooleanFalse);
    for (CFBooleanRef b : {kCFBooleanTrue, kCFBooleanFalse}) {
        EXPECT_EQ(CFGetTypeID(b), CFBooleanGetTypeID());
        EXPECT_EQ(CFGetRetainCount(b), kImmortal);
        EXPECT_EQ(CFRetain(b), b);
        CFRelease(b);
        CFRelease(b);
        EXPECT_EQ(CFGetRetainCount(b), kImmortal);
    }
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
}

TEST(Boolean, EqualityHashAndDescriptions) {
    EXPECT_TRUE(CFEqual(kCFBooleanTrue, kCFBooleanTrue));
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, kCFBooleanFalse));
    EXPECT_EQ(CFHash(kCFBooleanTrue), 2654435761u);
    EXPECT_EQ(CFHash(kCFBooleanFalse), 0u);

    EXPECT_EQ(formattingDescription(kCFBooleanTrue), "true");
    EXPECT_EQ(formattingDescription(kCFBooleanFalse), "false");
    std::string allocator = " [" + address(kCFAllocatorSystemDefault) + "]>";
    EXPECT_EQ(ascii(own(CFCopyDescription(kCFBooleanTrue))),
              "<CFBoolean " + address(kCFBooleanTrue) + allocator + "{value = true}");
    EXPECT_EQ(ascii(own(CFCopyDescription(kCFBooleanFalse))),
              "<CFBoolean " + address(kCFBooleanFalse) + allocator + "{value = false}");
}

TEST(Boolean, ValueOfNullOrWrongTypeIsFalse) {
    EXPECT_FALSE(CFBooleanGetValue(nullptr));
    EXPECT_FALSE(CFBooleanGetValue(reinterpret_cast<CFBooleanRef>(kCFNull)));
    EXPECT_FALSE(CFBooleanGetValue(reinterpret_cast<CFBooleanRef>(CFSTR("true"))));
    int one = 1;
    auto number = own(CFNumberCreate(nullptr, kCFNumberIntType, &one));
    EXPECT_FALSE(CFBooleanGetValue(reinterpret_cast<CFBooleanRef>(number.get())));
}
