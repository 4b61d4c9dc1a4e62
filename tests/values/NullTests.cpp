// HVNull: always the platform null, its text form and the report for a
// malformed text.
#include <halvane/core/HVNull.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <string>

#include "ValuesTestSupport.h"
#include "support/LogCapture.h"

namespace {

const void* const kNull = kCFNull;

}  // namespace

TEST(Null, EveryConstructionHoldsThePlatformNull) {
    HVNull null;
    HVNull fromString(CFSTR("ignored"));
    HVNull fromNothing(nullptr);
    HVNull copy(fromString);
    for (const HVNull* value : {&null, &fromString, &fromNothing, &copy}) {
        EXPECT_EQ(value->Ref(), kNull);
        EXPECT_TRUE(value->IsNull());
        EXPECT_TRUE(value->IsEmpty());
        EXPECT_EQ(value->ObjectsClassType(), HVNullClassType);
        EXPECT_EQ(value->ObjectsActualClassType(), HVNullClassType);
        EXPECT_FALSE(value->IsNativelyAllowedInPropertyList());
    }
    EXPECT_EQ(HVNull::ClassType(), HVNullClassType);
    EXPECT_EQ(HVNull::SharedEmptyObject(), kNull);

    // Emptying gives the null reference (the held type has no empty object of
    // its own); it is still null.
    null.Empty();
    EXPECT_EQ(null.Ref(), nullptr);
    EXPECT_TRUE(null.IsNull());
    fromString.Nullify();
    EXPECT_TRUE(fromString.IsNull());
}

TEST(Null, SerializesAndAcceptsOnlyItsOwnText) {
    HVNull null;
    EXPECT_EQ(std::string(null.Serialize()), "<null>");

    hvtest::LogCapture log;
    null.Deserialize("<null>");
    EXPECT_TRUE(log.messages().empty());

    null.Deserialize("null");
    null.Deserialize("");
    ASSERT_EQ(log.messages().size(), 2u);
    for (const std::string& message : log.messages()) {
        EXPECT_EQ(message,
                  "Failed Assert! (SerializedObject.IsEqualToString(STR(\"<null>\")))    Function:HVNull::Deserialize "
                  "File:HVNull Line:69");
    }
    EXPECT_EQ(null.Ref(), kNull);
}

TEST(Null, RebuiltByClassType) {
    hvtest::LogCapture log;
    std::shared_ptr<HVObject> object = hvtest::rebuilt(HVNullClassType, "<null>");
    ASSERT_NE(dynamic_cast<HVNull*>(object.get()), nullptr);
    EXPECT_EQ(object->ObjectsClassType(), HVNullClassType);
    EXPECT_EQ(object->Ref(), kNull);
    EXPECT_TRUE(log.messages().empty());

    std::shared_ptr<HVObject> malformed = hvtest::rebuilt(HVNullClassType, "nil");
    EXPECT_EQ(malformed->Ref(), kNull);
    EXPECT_EQ(log.messages().size(), 1u);

    std::shared_ptr<HVObject> made = hvtest::ObjectProbe::CreateObjectOfClassType(CFSTR("x"), HVNullClassType);
    auto* null = dynamic_cast<HVNull*>(made.get());
    ASSERT_NE(null, nullptr);
    EXPECT_EQ(null->Ref(), kNull);
    EXPECT_EQ(HVObject::Create(kCFNull).ObjectsClassType(), HVNullClassType);
}
