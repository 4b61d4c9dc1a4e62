// HVError and HVException: codes and their 32-bit storage, user
// information, descriptions, text forms and the conversion of platform
// faults.
#include <halvane/collections/HVData.h>
#include <halvane/errors/HVError.h>
#include <halvane/errors/HVException.h>
#include <halvane/os/File.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <regex>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

HVString entry(const HVDictionary& dictionary, const char* key) {
    CFTypeRef value = CFDictionaryGetValue(static_cast<CFDictionaryRef>(dictionary.Ref()), HVString(key).Ref());
    return value != nullptr && CFGetTypeID(value) == CFStringGetTypeID() ? HVString(value) : HVString();
}

}  // namespace

TEST(Error, CodeZeroNeverMakesAnError) {
    HVError none = HVError::ErrorWithDomainCodeAndUserInfo("X", 0, HVError::DictionaryWithErrorDescription("d"));
    EXPECT_FALSE(none.IsError());
    EXPECT_EQ(none.Code(), 0);
    EXPECT_EQ(none.Ref(), HVError::SharedEmptyObject());
    EXPECT_FALSE(HVError().IsError());
    EXPECT_EQ(HVError().Code(), 0);
    EXPECT_EQ(std::string(HVError().Domain()), "");
    EXPECT_EQ(HVError::ClassType(), HVErrorClassType);

    HVError kept = HVError::ErrorWithCodeDescriptionAndDomain(5, "first", "Domain");
    kept.InitWithDomainCodeAndUserInfo("Other", 0, HVDictionary());
    EXPECT_EQ(kept.Code(), 5);
}

TEST(Error, CodesAreStoredAsTheirLow32Bits) {
    HVError negative = HVError::ErrorWithCodeDescriptionAndDomain(-1, "minus one", "NegativeDomain");
    EXPECT_EQ(negative.Code(), -1);
    EXPECT_EQ(CFErrorGetCode(static_cast<CFErrorRef>(const_cast<void*>(negative.Ref()))), 4294967295);
    EXPECT_TRUE(negative.IsErrorWithCodeAndDomain(-1, "NegativeDomain"));
    EXPECT_FALSE(negative.IsErrorWithCodeAndDomain(-1, "Other"));
    EXPECT_FALSE(negative.IsErrorWithCodeAndDomain(1, "NegativeDomain"));
    // Only the low 32 bits count: 2^32 + 7 is code 7.
    HVError wide = HVError::ErrorWithCodeDescriptionAndDomain((1ll << 32) + 7, "wide", "D");
    EXPECT_EQ(wide.Code(), 7);
    EXPECT_TRUE(HVError::ErrorWithCodeDescriptionAndDomain(1ll << 32, "zero", "D").IsEmpty());
}

TEST(Error, UserInformationBuildersAndQueries) {
    HVDictionary info = HVError::DictionaryWithErrorDescriptionFailureReasonAndRecoverySuggestion(
        "Saving failed.", "The disk is full.", "Free some space.");
    EXPECT_EQ(info.Count(), 3u);
    HVError error = HVError::ErrorWithDomainCodeAndUserInfo("HVFileManagerDomain", 13, info);
    EXPECT_EQ(std::string(error.LocalizedDescription()), "Saving failed.");
    EXPECT_EQ(std::string(error.LocalizedFailureReason()), "The disk is full.");
    EXPECT_EQ(std::string(error.LocalizedRecoverySuggestion()), "Free some space.");
    EXPECT_EQ(std::string(error.Domain()), "HVFileManagerDomain");
    EXPECT_EQ(std::string(HVString(error.ObjectForKey(HVError::LocalizedDescriptionKey()))), "Saving failed.");
    EXPECT_TRUE(error.ObjectForKey("missing").IsNull());

    // Empty arguments are left out.
    EXPECT_EQ(HVError::DictionaryWithErrorDescriptionAndFailureReason("only", "").Count(), 1u);
    EXPECT_TRUE(HVError::DictionaryWithErrorDescription("").IsEmpty());

    // Without a description the platform's own sentence stands in.
    HVError bare = HVError::ErrorWithDomainCodeAndUserInfo("BareDomain", 42, HVDictionary());
    EXPECT_EQ(std::string(bare.LocalizedDescription()), "The operation couldn\xE2\x80\x99t be completed. (BareDomain error 42.)");
    EXPECT_EQ(std::string(bare.LocalizedFailureReason()), "");

    EXPECT_EQ(std::string(HVError::LocalizedRecoveryOptionsKey()), "LocalizedRecoveryOptionsErrorKey");
    EXPECT_EQ(std::string(HVError::UnderlyingErrorKey()), "NSUnderlyingError");
    EXPECT_EQ(std::string(HVError::LocalizedDescriptionKey()), "NSLocalizedDescription");
}

TEST(Error, SettingAnEntryRebuildsTheError) {
    HVError error = HVError::ErrorWithCodeDescriptionAndDomain(20004, "mismatch", "HalvaneDomain");
    error.SetObjectForKey(HVString("extra"), "Detail");
    EXPECT_EQ(error.Code(), 20004);
    EXPECT_EQ(std::string(HVString(error.ObjectForKey("Detail"))), "extra");
    EXPECT_EQ(error.UserInfo().Count(), 2u);
    error.SetObjectForKey(HVObject(), "Detail");
    EXPECT_EQ(error.UserInfo().Count(), 1u);

    // An empty error stays empty: the value is lost.
    HVError empty;
    empty.SetObjectForKey(HVString("lost"), "Key");
    EXPECT_FALSE(empty.IsError());
}

TEST(Error, DescriptionAndTextForm) {
    std::string emptyDescription = HVError().Description();
    EXPECT_TRUE(std::regex_match(emptyDescription, std::regex("code = 0 Domain =  UserInfo = <CFBasicHash .*type = "
                                                              "immutable dict, count = 0,\n(.|\n)*")))
        << emptyDescription;

    HVError error = HVError::ErrorWithCodeDescriptionAndDomain(7, "seven", "SevenDomain");
    std::string text = error.Serialize();
    EXPECT_EQ(text.rfind("7;SevenDomain;", 0), 0u) << text;

    HVError read;
    read.Deserialize("9;ReadDomain;" + std::string(HVDictionary().Serialize()));
    EXPECT_EQ(read.Code(), 9);
    EXPECT_EQ(std::string(read.Domain()), "ReadDomain");

    HVError malformed = HVError::ErrorWithCodeDescriptionAndDomain(3, "x", "D");
    malformed.Deserialize("1;two;three;four");
    EXPECT_FALSE(malformed.IsError());
    malformed.Deserialize("0;D;");
    EXPECT_FALSE(malformed.IsError());
}

TEST(Error, DomainsNamedAfterFiles) {
    EXPECT_EQ(std::string(FilePathToDomain("C:\\src\\Widget.txt")), "WidgetDomain");
    EXPECT_EQ(std::string(FilePathToDomain("/home/user/Gadget.cpp")), "GadgetDomain");
    EXPECT_EQ(std::string(FilePathToDomain("Plain")), "PlainDomain");
}

TEST(Error, MakeHVErrorForms) {
    HVError withSuggestion = MakeHVError(12, "Described.", "Try again.", "MakeDomain");
    EXPECT_EQ(withSuggestion.Code(), 12);
    EXPECT_EQ(std::string(withSuggestion.LocalizedDescription()), "Described.");
    EXPECT_EQ(std::string(withSuggestion.LocalizedRecoverySuggestion()), "Try again.");
    EXPECT_EQ(std::string(withSuggestion.LocalizedFailureReason()), "");

    HVError plain = MakeHVError(3, "PlainDomain", HVError::DictionaryWithErrorDescription("p"));
    EXPECT_EQ(std::string(plain.Domain()), "PlainDomain");
    EXPECT_FALSE(MakeHVError(0, "a", "b", "Domain").IsError());
}

TEST(Exception, NamesAndEntries) {
    EXPECT_EQ(std::string(HVExceptionName::RangeException()), "RangeException");
    EXPECT_EQ(std::string(HVExceptionName::InvalidFilePositionException()), "InvalidFilePositionException");
    EXPECT_EQ(&HVExceptionName::MemoryException(), &HVExceptionName::MemoryException());

    HVException range = HVException::ExceptionWithNameAndReason(HVExceptionName::RangeException(), "");
    EXPECT_EQ(CFDictionaryGetCount(static_cast<CFDictionaryRef>(range.Ref())), 1);
    EXPECT_EQ(std::string(range.Reason()), "");
    EXPECT_TRUE(range.UserInfo().IsEmpty());

    HVError error = HVError::ErrorWithCodeDescriptionAndDomain(20001, "ended", "HalvaneDomain");
    HVException fromError = HVException::ExceptionWithNameAndError("EndOfFileException", error);
    EXPECT_EQ(std::string(fromError.Reason()), "ended");
    EXPECT_EQ(std::string(entry(fromError.UserInfo(), "NSLocalizedDescription")), "ended");

    // Exceptions are thrown by value and caught by reference.
    try {
        throw HVException::ExceptionWithNameAndReason("GenericException", "thrown");
    } catch (const HVException& caught) {
        EXPECT_EQ(std::string(caught.Name()), "GenericException");
    }
}

TEST(Exception, PlatformFaultsAndTheirErrors) {
    halvane::os::FileError locked(halvane::os::FileError::LockViolation, EAGAIN, "/tmp/locked.dat");
    HVException exception = HVException::ExceptionWithException(locked);
    EXPECT_EQ(std::string(exception.Name()), "LockViolationException");
    HVNumber cause(exception.UserInfo().Ref() != nullptr
                       ? CFDictionaryGetValue(static_cast<CFDictionaryRef>(exception.UserInfo().Ref()), CFSTR("Cause"))
                       : nullptr);
    EXPECT_EQ(cause.IntValue(), 12);
    EXPECT_EQ(std::string(entry(exception.UserInfo(), "FilePath")), "/tmp/locked.dat");
    EXPECT_EQ(std::string(exception.Reason()), "/tmp/locked.dat: Resource temporarily unavailable");

    for (auto cause : {halvane::os::FileError::None, halvane::os::FileError::Generic}) {
        EXPECT_EQ(std::string(HVException::ExceptionWithException(halvane::os::FileError(cause, 0, "f")).Name()),
                  "GenericException");
    }
    EXPECT_EQ(std::string(HVException::ExceptionWithException(std::bad_alloc()).Name()), "MemoryException");
    EXPECT_EQ(std::string(HVException::ExceptionWithException(std::runtime_error("odd")).Reason()), "odd");

    HVError lockError = HVError::ErrorWithException(exception);
    EXPECT_TRUE(lockError.IsErrorWithCodeAndDomain(255, "HalvaneDomain"));
    EXPECT_EQ(HVError::ErrorWithException(HVException::ExceptionWithException(std::bad_alloc())).Code(), 20000);
    EXPECT_FALSE(HVError::ErrorWithException(HVException::ExceptionWithNameAndReason("GenericException", "")).IsError());
}

TEST(Exception, TextForm) {
    HVException exception = HVException::ExceptionWithNameAndReason("RangeException", "out");
    std::string text = exception.Serialize();
    EXPECT_EQ(text.rfind("0;out;", 0), 0u) << text;

    HVException read;
    read.Deserialize("Named;Because;" + std::string(HVDictionary().Serialize()));
    EXPECT_EQ(std::string(read.Name()), "Named");
    EXPECT_EQ(std::string(read.Reason()), "Because");
    read.Deserialize("a;b;c;d");
    EXPECT_TRUE(read.IsEmpty());
    EXPECT_EQ(std::string(read.Name()), "");
}

TEST(DataFiles, WritingAndAppending) {
    char directory[] = "/tmp/halvane-write-XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    std::string path = std::string(directory) + "/out.bin";
    HVData bytes = HVData::DataWithBytesOfLength("abc", 3);
    HVError error;
    EXPECT_TRUE(bytes.WriteToFile(HVString(path), error));
    EXPECT_FALSE(error.IsError());
    EXPECT_TRUE(HVData::DataWithBytesOfLength("xy", 2).AppendToFile(HVString(path)));
    HVData read = HVData::DataWithContentsOfFile(HVString(path));
    EXPECT_EQ(std::string(static_cast<const char*>(read.Bytes()), size_t(read.Length())), "abcxy");
    EXPECT_TRUE(bytes.WriteToFileAtomically(HVString(path)));
    EXPECT_EQ(HVData::DataWithContentsOfFile(HVString(path)).Length(), 3u);

    // Appending to a path that does not exist creates the file.
    std::string fresh = std::string(directory) + "/fresh.bin";
    EXPECT_TRUE(bytes.AppendToFile(HVString(fresh)));
    EXPECT_EQ(HVData::DataWithContentsOfFile(HVString(fresh)).Length(), 3u);
    EXPECT_FALSE(bytes.AppendToFile(HVString(directory)));
    EXPECT_FALSE(bytes.AppendToFile(HVString("")));

    // A missing directory is reported through the error...
    std::string missing = std::string(directory) + "/no/such/dir.bin";
    EXPECT_FALSE(bytes.WriteToFile(HVString(missing), error));
    EXPECT_TRUE(error.IsErrorWithCodeAndDomain(HVFileNotFoundError, "HalvaneDomain"));

    // ...a fault without an error code of its own is thrown.
    std::string underFile = path + "/child.bin";
    try {
        bytes.WriteToFile(HVString(underFile), error);
        ADD_FAILURE() << "no exception";
    } catch (const HVException& exception) {
        EXPECT_EQ(std::string(exception.Name()), "InvalidFilePathException");
    }
    unlink(path.c_str());
    unlink(fresh.c_str());
    rmdir(directory);
}
