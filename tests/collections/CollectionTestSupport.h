// Helpers shared by the collection tests: building platform collections and
// reading the library's assertion lines back.
#ifndef HALVANE_TESTS_COLLECTIONS_COLLECTIONTESTSUPPORT_H
#define HALVANE_TESTS_COLLECTIONS_COLLECTIONTESTSUPPORT_H

#include <halvane/collections/HVArray.h>
#include <halvane/core/HVRetainedObject.h>
#include <halvane/errors/HVError.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace hvtest {

inline HVArray arrayOf(std::initializer_list<HVObject> elements) {
    HVMutableArray array;
    for (const HVObject& element : elements) array.AddObject(element);
    return array.Copy();
}

inline HVData bytes(const std::string& text) { return HVData::DataWithBytesOfLength(text.data(), text.size()); }

inline std::string text(const HVString& string) { return std::string(string); }

inline std::string failureReason(const HVError& error) { return text(error.LocalizedFailureReason()); }

// A retained object that records its deletion in a flag that outlives it.
struct Carried : HVRetainedObject {
    explicit Carried(bool* deletedFlag = nullptr) : deleted(deletedFlag) {}
    ~Carried() override {
        if (deleted != nullptr) *deleted = true;
    }
    void SubclassSlot() override {}
    bool* deleted;
};

// Checks one assertion line of a typed accessor word for word around the
// error's own description: "Failed Assert! (condition) - <error>
// Function:function File:file Line:line".
inline void expectAssertionLine(const std::string& message, const std::string& condition, const std::string& reason,
                                const std::string& function, const std::string& file, int line) {
    std::string head = "Failed Assert! (" + condition + ") - Error Domain=HalvaneDomain Code=20004 \"Object type "
                       "does not match the object type requested.\"";
    std::string tail = "    Function:" + function + " File:" + file + " Line:" + std::to_string(line);
    EXPECT_EQ(message.rfind(head, 0), 0u) << message;
    EXPECT_NE(message.find(reason), std::string::npos) << message;
    ASSERT_GE(message.size(), tail.size()) << message;
    EXPECT_EQ(message.substr(message.size() - tail.size()), tail) << message;
}

}  // namespace hvtest

#endif  // HALVANE_TESTS_COLLECTIONS_COLLECTIONTESTSUPPORT_H
