// CFError: constants, creation and the copies it makes, the localized
// description and other derived texts, the one-line description, equality,
// hashing and refused misuse.
#include "CFTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

using namespace cftest;

namespace {

Owned<CFStringRef> text(const std::string& ascii) {
    return string(std::u16string(ascii.begin(), ascii.end()));
}

Owned<CFDictionaryRef> dictionary(std::initializer_list<std::pair<CFTypeRef, CFTypeRef>> entries) {
    auto d = CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    for (const auto& [key, value] : entries) CFDictionarySetValue(d, key, value);
    return own(static_cast<CFDictionaryRef>(d));
}

Owned<CFErrorRef> error(const char* domain, CFIndex code, CFDictionaryRef userInfo = nullptr) {
    return own(CFErrorCreate(nullptr, text(domain), code, userInfo));
}

std::u16string localized(CFErrorRef err) {
    return units(own(CFErrorCopyDescription(err)));
}

std::string description(CFTypeRef cf) {
    return ascii(own(CFCopyDescription(cf)));
}

// What "%@" prints: the class's formatting description.
std::string formattingDescription(CFTypeRef cf) {
    const CFRuntimeClass* cls = _CFRuntimeGetClassWithTypeID(CFGetTypeID(cf));
    return ascii(own(cls->copyFormattingDesc(cf, nullptr)));
}

std::string pointerText(const void* p) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "0x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
    return buffer;
}

}  // namespace

TEST(ErrorConstants, DomainsAndKeysAreImmortalStrings) {
    const std::pair<CFStringRef, const char*> constants[] = {
        {kCFErrorDomainPOSIX, "NSPOSIXErrorDomain"},
        {kCFErrorDomainOSStatus, "NSOSStatusErrorDomain"},
        {kCFErrorDomainMach, "NSMachErrorDomain"},
        {kCFErrorDomainCocoa, "NSCocoaErrorDomain"},
        {kCFErrorLocalizedDescriptionKey, "NSLocalizedDescription"},
        {kCFErrorLocalizedFailureKey, "NSLocalizedFailure"},
        {kCFErrorLocalizedFailureReasonKey, "NSLocalizedFailureReason"},
        {kCFErrorLocalizedRecoverySuggestionKey, "NSLocalizedRecoverySuggestion"},
        {kCFErrorDescriptionKey, "NSDescription"},
        {kCFErrorDebugDescriptionKey, "NSDebugDescription"},
        {kCFErrorUnderlyingErrorKey, "NSUnderlyingError"},
        {kCFErrorURLKey, "NSURL"},
        {kCFErrorFilePathKey, "NSFilePath"},
    };
    for (const auto& [constant, expected] : constants) {
        ASSERT_EQ(CFGetTypeID(constant), CFStringGetTypeID()) << expected;
        EXPECT_EQ(ascii(constant), expected);
        EXPECT_EQ(CFGetRetainCount(constant), kImmortal) << expected;
        EXPECT_TRUE(CFEqual(constant, text(expected))) << expected;
        EXPECT_EQ(CFHash(constant), CFHash(text(expected))) << expected;
        CFRelease(constant);
        EXPECT_EQ(CFStringGetLength(constant), CFIndex(std::strlen(expected)));
    }
}

TEST(ErrorCreation, DomainCodeAndUserInfoAreCopies) {
    EXPECT_EQ(CFErrorGetTypeID(), 27u);
    auto domain = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppendCharacters(domain, reinterpret_cast<const UniChar*>(u"MyDomain"), 8);
    auto key = text("key");
    auto value = text("value");
    auto callerInfo =
        own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue(callerInfo, key, value);
    {
        auto err = own(CFErrorCreate(nullptr, domain, -(CFIndex(1) << 40), callerInfo));
        ASSERT_TRUE(err);
        EXPECT_EQ(CFGetTypeID(err), CFErrorGetTypeID());
        EXPECT_EQ(CFGetRetainCount(err), 1);
        EXPECT_EQ(CFErrorGetCode(err), -(CFIndex(1) << 40));
        EXPECT_EQ(CFGetRetainCount(value), 3);  // test, caller's dictionary, error's copy

        // Later changes to the caller's domain and dictionary stay out.
        CFStringAppendCharacters(domain, reinterpret_cast<const UniChar*>(u"!"), 1);
        CFDictionaryRemoveValue(callerInfo, key);
        CFDictionarySetValue(callerInfo, text("added"), value);
        EXPECT_EQ(ascii(CFErrorGetDomain(err)), "MyDomain");

        auto userInfo = own(CFErrorCopyUserInfo(err));
        ASSERT_TRUE(userInfo);
        EXPECT_NE(userInfo.get(), static_cast<CFDictionaryRef>(callerInfo.get()));
        EXPECT_FALSE(_CFDictionaryIsMutable(userInfo));
        EXPECT_EQ(CFDictionaryGetCount(userInfo), 1);
        EXPECT_EQ(CFDictionaryGetValue(userInfo, key), value.get());
        EXPECT_EQ(CFDictionaryGetValue(userInfo, text("added")), nullptr);
        // The same dictionary every time, retained for the caller.
        auto again = own(CFErrorCopyUserInfo(err));
        EXPECT_EQ(again.get(), userInfo.get());
        EXPECT_EQ(CFGetRetainCount(userInfo), 3);
    }
    EXPECT_EQ(CFGetRetainCount(value), 2);  // the error gave its references back
    EXPECT_EQ(CFGetRetainCount(key), 1);

    // Without user info, an empty dictionary.
    auto plain = error("MyDomain", 42);
    auto empty = own(CFErrorCopyUserInfo(plain));
    ASSERT_TRUE(empty);
    EXPECT_EQ(CFDictionaryGetCount(empty), 0);
    EXPECT_EQ(CFErrorGetCode(plain), 42);

    // An immutable domain is shared, not copied.
    auto fixedDomain = text("Fixed");
    auto shared = own(CFErrorCreate(nullptr, fixedDomain, 1, nullptr));
    EXPECT_EQ(CFErrorGetDomain(shared), fixedDomain.get());
    EXPECT_EQ(CFErrorCreate(kCFAllocatorNull, fixedDomain, 1, nullptr), nullptr);
}

TEST(ErrorCreation, KeysAndValuesGetCopyStringKeys) {
    auto mutableKey = own(CFStringCreateMutable(nullptr, 0));
    CFStringAppendCharacters(mutableKey, reinterpret_cast<const UniChar*>(u"Detail"), 6);
    auto value = text("the detail");
    const void* keys[] = {mutableKey.get(), kCFErrorLocalizedDescriptionKey};
    const void* values[] = {value.get(), CFSTR("Something failed.")};
    {
        auto err = own(CFErrorCreateWithUserInfoKeysAndValues(nullptr, kCFErrorDomainCocoa, 4, keys, values, 2));
        ASSERT_TRUE(err);
        EXPECT_EQ(CFGetRetainCount(mutableKey), 1);  // copied, not retained
        EXPECT_EQ(CFGetRetainCount(value), 2);
        CFStringAppendCharacters(mutableKey, reinterpret_cast<const UniChar*>(u"s"), 1);
        auto userInfo = own(CFErrorCopyUserInfo(err));
        EXPECT_EQ(CFDictionaryGetCount(userInfo), 2);
        EXPECT_EQ(CFDictionaryGetValue(userInfo, text("Detail")), value.get());
        EXPECT_EQ(CFDictionaryGetValue(userInfo, mutableKey), nullptr);
        EXPECT_EQ(localized(err), u"Something failed.");
    }
    EXPECT_EQ(CFGetRetainCount(value), 1);

    auto none = own(CFErrorCreateWithUserInfoKeysAndValues(nullptr, kCFErrorDomainPOSIX, 1, nullptr, nullptr, 0));
    ASSERT_TRUE(none);
    EXPECT_EQ(CFDictionaryGetCount(own(CFErrorCopyUserInfo(none))), 0);
}

TEST(ErrorLocalizedDescription, FirstMatchOfTheFiveSteps) {
    // 5: nothing to go on.
    EXPECT_EQ(localized(error("MyDomain", 42)), u"The operation couldn\u2019t be completed. (MyDomain error 42.)");
    EXPECT_EQ(localized(error("NSOSStatusErrorDomain", -43)),
              u"The operation couldn\u2019t be completed. (OSStatus error -43.)");
    EXPECT_EQ(localized(error("NSCocoaErrorDomain", 3840)),
              u"The operation couldn\u2019t be completed. (Cocoa error 3840.)");
    EXPECT_EQ(localized(error("NSMachErrorDomain", 5)), u"The operation couldn\u2019t be completed. (Mach error 5.)");
    EXPECT_EQ(localized(error("NSCoreFoundationErrorDomain", 0)),
              u"The operation couldn\u2019t be completed. (Core Foundation error 0.)");

    // 4: a description.
    auto described = dictionary({{kCFErrorDescriptionKey, CFSTR("disk on fire")}});
    EXPECT_EQ(localized(error("MyDomain", 42, described)),
              u"The operation couldn\u2019t be completed. (MyDomain error 42 - disk on fire)");

    // 3: a failure reason, which beats the description.
    auto reason = dictionary(
        {{kCFErrorLocalizedFailureReasonKey, CFSTR("The disk is full.")}, {kCFErrorDescriptionKey, CFSTR("ignored")}});
    EXPECT_EQ(localized(error("MyDomain", 42, reason)), u"The operation couldn\u2019t be completed. The disk is full.");

    // 2: a failure, with or without its reason.
    auto failure = dictionary({{kCFErrorLocalizedFailureKey, CFSTR("Saving failed.")},
                               {kCFErrorLocalizedFailureReasonKey, CFSTR("The disk is full.")}});
    EXPECT_EQ(localized(error("MyDomain", 42, failure)), u"Saving failed. The disk is full.");
    auto failureAlone = dictionary({{kCFErrorLocalizedFailureKey, CFSTR("Saving failed.")}});
    EXPECT_EQ(localized(error("MyDomain", 42, failureAlone)), u"Saving failed.");

    // 1: a localized description, as is.
    auto everything = dictionary({{kCFErrorLocalizedDescriptionKey, CFSTR("Caf\u00e9 closed.")},
                                  {kCFErrorLocalizedFailureKey, CFSTR("Saving failed.")},
                                  {kCFErrorLocalizedFailureReasonKey, CFSTR("The disk is full.")}});
    EXPECT_EQ(localized(error("MyDomain", 42, everything)), u"Caf\u00e9 closed.");

    // Values that are not strings do not count.
    auto notText = dictionary({{kCFErrorLocalizedDescriptionKey, described.get()}});
    EXPECT_EQ(localized(error("MyDomain", 7, notText)),
              u"The operation couldn\u2019t be completed. (MyDomain error 7.)");
}

TEST(ErrorLocalizedDescription, POSIXTextsAreEnglishWhateverTheLocale) {
    // A locale with translated system messages, where one is installed.
    const char* german = std::setlocale(LC_ALL, "de_DE.UTF-8");
    if (german == nullptr) german = std::setlocale(LC_ALL, "de_DE.utf8");
    auto posix = own(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, 2, nullptr));
    EXPECT_EQ(localized(posix), u"The operation couldn\u2019t be completed. No such file or directory");
    EXPECT_EQ(ascii(own(CFErrorCopyFailureReason(posix))), "No such file or directory");
    EXPECT_EQ(description(posix), "Error Domain=NSPOSIXErrorDomain Code=2 \"No such file or directory\"");
    auto unknown = own(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, 100000, nullptr));
    EXPECT_EQ(ascii(own(CFErrorCopyFailureReason(unknown))), "Unknown error 100000");
    auto huge = own(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, CFIndex(1) << 40, nullptr));
    EXPECT_EQ(ascii(own(CFErrorCopyFailureReason(huge))), "Unknown error 1099511627776");
    std::setlocale(LC_ALL, "C");

    // The user info comes before what the domain supplies.
    auto failure = dictionary({{kCFErrorLocalizedFailureKey, CFSTR("Opening failed.")}});
    EXPECT_EQ(localized(own(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, 2, failure))),
              u"Opening failed. No such file or directory");
    auto reason = dictionary({{kCFErrorLocalizedFailureReasonKey, CFSTR("Gone.")}});
    EXPECT_EQ(localized(own(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, 2, reason))),
              u"The operation couldn\u2019t be completed. Gone.");
    // A domain given as another object with the same text is the same domain.
    EXPECT_EQ(localized(error("NSPOSIXErrorDomain", 13)),
              u"The operation couldn\u2019t be completed. Permission denied");
}

TEST(ErrorDerivedStrings, FailureReasonAndRecoverySuggestionHaveNoFallback) {
    auto plain = error("MyDomain", 1);
    EXPECT_EQ(CFErrorCopyFailureReason(plain), nullptr);
    EXPECT_EQ(CFErrorCopyRecoverySuggestion(plain), nullptr);
    EXPECT_EQ(CFErrorCopyRecoverySuggestion(own(CFErrorCreate(nullptr, kCFErrorDomainPOSIX, 2, nullptr))), nullptr);

    auto info = dictionary({{kCFErrorLocalizedFailureReasonKey, CFSTR("Too big.")},
                            {kCFErrorLocalizedRecoverySuggestionKey, CFSTR("Try a smaller file.")}});
    auto err = error("MyDomain", 1, info);
    auto reason = own(CFErrorCopyFailureReason(err));
    EXPECT_EQ(ascii(reason), "Too big.");
    EXPECT_EQ(reason.get(), CFDictionaryGetValue(info, kCFErrorLocalizedFailureReasonKey));  // as stored
    EXPECT_EQ(ascii(own(CFErrorCopyRecoverySuggestion(err))), "Try a smaller file.");
}

TEST(ErrorDescription, DomainCodeDescriptionAndUserInfo) {
    auto plain = error("MyDomain", 42);
    EXPECT_EQ(description(plain), "Error Domain=MyDomain Code=42 \"(null)\"");
    EXPECT_EQ(formattingDescription(plain), description(plain));

    auto parse = dictionary({{kCFErrorDebugDescriptionKey, CFSTR("Encountered unexpected EOF")}});
    auto parseError = own(CFErrorCreate(nullptr, kCFErrorDomainCocoa, 3840, parse));
    EXPECT_EQ(description(parseError),
              "Error Domain=NSCocoaErrorDomain Code=3840 \"Encountered unexpected EOF\" "
              "UserInfo={NSDebugDescription=Encountered unexpected EOF}");
    EXPECT_EQ(formattingDescription(parseError), description(parseError));

    // The debug description joins only a description that differs from it.
    auto both = dictionary({{kCFErrorDescriptionKey, CFSTR("short")}, {kCFErrorDebugDescriptionKey, CFSTR("long")}});
    std::string withDebug = description(error("D", -1, both));
    EXPECT_EQ(withDebug.rfind("Error Domain=D Code=-1 \"short\" (long) UserInfo={", 0), 0u) << withDebug;
    auto same = dictionary({{kCFErrorDescriptionKey, CFSTR("same")}, {kCFErrorDebugDescriptionKey, CFSTR("same")}});
    EXPECT_EQ(description(error("D", 1, same)).rfind("Error Domain=D Code=1 \"same\" UserInfo={", 0), 0u);
    auto emptyDebug = dictionary({{kCFErrorDescriptionKey, CFSTR("text")}, {kCFErrorDebugDescriptionKey, CFSTR("")}});
    EXPECT_EQ(description(error("D", 1, emptyDebug)).rfind("Error Domain=D Code=1 \"text\" UserInfo={", 0), 0u);
    // Precedence of the description keys.
    auto localizedOnly = dictionary({{kCFErrorLocalizedDescriptionKey, CFSTR("Localized.")},
                                     {kCFErrorLocalizedFailureReasonKey, CFSTR("Reason.")}});
    EXPECT_EQ(description(error("D", 1, localizedOnly)).rfind("Error Domain=D Code=1 \"Localized.\" UserInfo={", 0),
              0u);
    auto reasonOnly = dictionary({{kCFErrorLocalizedFailureReasonKey, CFSTR("Reason.")}});
    EXPECT_EQ(description(error("D", 1, reasonOnly)),
              "Error Domain=D Code=1 \"Reason.\" UserInfo={NSLocalizedFailureReason=Reason.}");

    // Every entry, as "%@" prints keys and values, in enumeration order.
    auto path = text("/tmp/x");
    auto info =
        dictionary({{kCFErrorFilePathKey, path.get()}, {CFSTR("Count"), CFSTR("3")}, {CFSTR("Empty"), CFSTR("")}});
    std::vector<const void*> keys(3), values(3);
    CFDictionaryGetKeysAndValues(info, keys.data(), values.data());
    std::string entries;
    for (size_t i = 0; i < 3; ++i) {
        if (i > 0) entries += ", ";
        entries += ascii(static_cast<CFStringRef>(keys[i])) + "=" + ascii(static_cast<CFStringRef>(values[i]));
    }
    auto withInfo = error("MyDomain", 42, info);
    EXPECT_EQ(description(withInfo), "Error Domain=MyDomain Code=42 \"(null)\" UserInfo={" + entries + "}");
    EXPECT_EQ(formattingDescription(withInfo), description(withInfo));

    // A dictionary of raw pointers is printed by address, never dereferenced.
    auto rawInfo = own(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
    CFDictionarySetValue(rawInfo, reinterpret_cast<const void*>(1), reinterpret_cast<const void*>(2));
    auto rawError = error("D", 1, rawInfo);
    EXPECT_EQ(description(rawError), "Error Domain=D Code=1 \"(null)\" UserInfo={<0x1>=<0x2>}");
    EXPECT_EQ(localized(rawError), u"The operation couldn\u2019t be completed. (D error 1.)");
}

TEST(ErrorDescription, UnderlyingErrorsNestThreeLevelsDeep) {
    // D1 wraps D2, which wraps D3, ... down to D5.
    std::vector<Owned<CFErrorRef>> chain;
    chain.push_back(error("D5", 5, dictionary({{kCFErrorFilePathKey, CFSTR("/five")}})));
    for (int level = 4; level >= 1; --level) {
        std::string domain = "D" + std::to_string(level);
        chain.push_back(error(domain.c_str(), level, dictionary({{kCFErrorUnderlyingErrorKey, chain.back().get()}})));
    }
    CFErrorRef innermost = chain.front();
    auto innermostInfo = own(CFErrorCopyUserInfo(innermost));
    std::string expected =
        "Error Domain=D5 Code=5 \"(null)\" UserInfo=" + pointerText(innermostInfo) + " (not displayed)";
    for (size_t i = 1; i < chain.size(); ++i) {
        std::string level = std::to_string(5 - i);
        expected = "Error Domain=D" + level + " Code=" + level +
                   " \"(null)\" UserInfo={NSUnderlyingError=" + pointerText(chain[i - 1]) + " {" + expected + "}}";
    }
    EXPECT_EQ(description(chain.back()), expected);
    EXPECT_EQ(formattingDescription(chain.back()), expected);
    // Described on its own, the innermost error shows its user info.
    EXPECT_EQ(description(innermost), "Error Domain=D5 Code=5 \"(null)\" UserInfo={NSFilePath=/five}");

    // An underlying error under another key is an ordinary value.
    auto other = error("Outer", 1, dictionary({{CFSTR("Cause"), innermost}}));
    EXPECT_EQ(description(other),
              "Error Domain=Outer Code=1 \"(null)\" UserInfo={Cause=Error Domain=D5 Code=5 \"(null)\" "
              "UserInfo={NSFilePath=/five}}");
}

TEST(ErrorDescription, AnErrorReachableFromItsOwnUserInfoStaysBounded) {
    // Through an ordinary entry: user info stops being shown four levels down.
    auto holder =
        own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    auto err = error("Loop", 1, dictionary({{CFSTR("Holder"), holder.get()}}));
    CFDictionarySetValue(holder, CFSTR("Error"), err);
    std::string text = description(err);
    EXPECT_EQ(text.rfind("Error Domain=Loop Code=1 \"(null)\" UserInfo={Holder=<CFBasicHash ", 0), 0u);
    EXPECT_NE(text.find(" (not displayed)"), std::string::npos);

    // Through the description text itself: cut off with a report.
    auto debugHolder =
        own(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    auto looping = error("Loop", 2, dictionary({{kCFErrorDebugDescriptionKey, debugHolder.get()}}));
    CFDictionarySetValue(debugHolder, CFSTR("Error"), looping);
    testing::internal::CaptureStderr();
    text = description(looping);
    std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.rfind("Error Domain=Loop Code=2 \"<CFBasicHash ", 0), 0u);
    EXPECT_NE(reports.find("CFError: description: errors nested too deeply"), std::string::npos);

    // Break the cycles so that everything goes away.
    CFDictionaryRemoveAllValues(holder);
    CFDictionaryRemoveAllValues(debugHolder);
    EXPECT_EQ(CFGetRetainCount(err), 1);
    EXPECT_EQ(CFGetRetainCount(looping), 1);
}

TEST(ErrorEquality, CodeDomainAndUserInfo) {
    auto info = dictionary({{kCFErrorFilePathKey, CFSTR("/a")}});
    auto sameInfo = dictionary({{kCFErrorFilePathKey, text("/a").get()}});
    auto a = error("MyDomain", 7, info);
    auto b = error("MyDomain", 7, sameInfo);
    EXPECT_TRUE(CFEqual(a, b));
    EXPECT_EQ(CFHash(a), CFHash(b));
    EXPECT_EQ(CFHash(a), CFHash(text("MyDomain")) + 7);
    EXPECT_EQ(CFHash(error("MyDomain", -7)), CFHash(text("MyDomain")) - 7);
    EXPECT_FALSE(CFEqual(a, error("MyDomain", 8, info)));
    EXPECT_FALSE(CFEqual(a, error("OtherDomain", 7, info)));
    EXPECT_FALSE(CFEqual(a, error("MyDomain", 7)));
    EXPECT_FALSE(CFEqual(a, error("MyDomain", 7, dictionary({{kCFErrorFilePathKey, CFSTR("/b")}}))));
    EXPECT_TRUE(CFEqual(error("MyDomain", 7), error("MyDomain", 7)));
    EXPECT_FALSE(CFEqual(a, info));
}

TEST(ErrorMisuse, InvalidArgumentsGiveNeutralResults) {
    auto notADictionary = text("not a dictionary");
    testing::internal::CaptureStderr();
    EXPECT_EQ(CFErrorCreate(nullptr, nullptr, 1, nullptr), nullptr);
    EXPECT_EQ(CFErrorCreate(nullptr, CFSTR("D"), 1, reinterpret_cast<CFDictionaryRef>(notADictionary.get())), nullptr);
    EXPECT_EQ(CFErrorCreateWithUserInfoKeysAndValues(nullptr, nullptr, 1, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(CFErrorCreateWithUserInfoKeysAndValues(nullptr, CFSTR("D"), 1, nullptr, nullptr, 3), nullptr);
    EXPECT_EQ(CFErrorGetDomain(nullptr), nullptr);
    EXPECT_EQ(CFErrorGetCode(nullptr), 0);
    EXPECT_EQ(CFErrorCopyUserInfo(nullptr), nullptr);
    auto wrongType = reinterpret_cast<CFErrorRef>(const_cast<void*>(static_cast<const void*>(notADictionary.get())));
    EXPECT_EQ(CFErrorCopyDescription(wrongType), nullptr);
    EXPECT_EQ(CFErrorCopyFailureReason(wrongType), nullptr);
    EXPECT_EQ(CFErrorCopyRecoverySuggestion(wrongType), nullptr);
    std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(reports.begin(), reports.end(), '\n'), 10) << reports;
    EXPECT_NE(reports.find("CFError: CFErrorCreate(): NULL domain\n"), std::string::npos);
    EXPECT_NE(reports.find("CFError: CFErrorGetCode(): NULL error\n"), std::string::npos);
    EXPECT_EQ(CFGetRetainCount(notADictionary), 1);
}
