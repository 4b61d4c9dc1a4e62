// Reading and writing resources through URLs: whole files, properties,
// error codes, data: URLs, and atomic replacement of files, on real files in
// a temporary directory.
#include "MisuseReports.h"
#include "URLTestSupport.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace cftest;
namespace fs = std::filesystem;

namespace {

class URLAccess : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/urlaccess.XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        directory_ = name;
        umask(022);
    }
    void TearDown() override { fs::remove_all(directory_); }

    std::string path(const std::string& name) const { return directory_ + "/" + name; }

    void writeFile(const std::string& name, const std::string& contents) const {
        std::ofstream(path(name), std::ios::binary) << contents;
    }

    static std::string readFile(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    static Owned<CFURLRef> fileURL(const std::string& file, bool isDirectory = false) {
        return own(CFURLCreateWithFileSystemPath(nullptr, str(file), kCFURLPOSIXPathStyle, isDirectory));
    }

    // Reads url; returns the success, the data as text ("<NULL>" without
    // data) and the error code.
    static bool read(CFURLRef url, std::string& data, SInt32& error, CFDictionaryRef* properties = nullptr,
                     CFArrayRef desired = nullptr) {
        CFDataRef bytes = nullptr;
        bool ok = CFURLCreateDataAndPropertiesFromResource(nullptr, url, &bytes, properties, desired, &error);
        data = bytes == nullptr ? "<NULL>"
                                : std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(bytes)),
                                              size_t(CFDataGetLength(bytes)));
        if (bytes != nullptr) CFRelease(bytes);
        return ok;
    }

    static bool write(CFURLRef url, const std::string& text, SInt32& error, CFDictionaryRef properties = nullptr) {
        auto data = own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>(text.data()), CFIndex(text.size())));
        return CFURLWriteDataAndPropertiesToResource(url, data, properties, &error);
    }

    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(directory_)) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    static Owned<CFDictionaryRef> modeProperty(SInt32 mode) {
        auto number = own(CFNumberCreate(nullptr, kCFNumberSInt32Type, &mode));
        const void* keys[] = {kCFURLFilePOSIXMode};
        const void* values[] = {number.get()};
        return own(CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks,
                                      &kCFTypeDictionaryValueCallBacks));
    }

    std::string directory_;
};

SInt64 int64Value(CFTypeRef number) {
    SInt64 value = -1;
    CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberSInt64Type, &value);
    return value;
}

}  // namespace

TEST_F(URLAccess, ReadsWholeFilesAndTheirProperties) {
    EXPECT_EQ(utf8(kCFURLFileExists), "kCFURLFileExists");
    EXPECT_EQ(utf8(kCFURLFileDirectoryContents), "kCFURLFileDirectoryContents");
    EXPECT_EQ(utf8(kCFURLFileLength), "kCFURLFileLength");
    EXPECT_EQ(utf8(kCFURLFileLastModificationTime), "kCFURLFileLastModificationTime");
    EXPECT_EQ(utf8(kCFURLFilePOSIXMode), "kCFURLFilePOSIXMode");
    EXPECT_EQ(utf8(kCFURLFileOwnerID), "kCFURLFileOwnerID");
    EXPECT_EQ(CFGetRetainCount(kCFURLFileExists), kImmortal);

    writeFile("a b%.txt", std::string("hello\0world", 11));
    ASSERT_EQ(chmod(path("a b%.txt").c_str(), 0640), 0);
    struct stat status;
    ASSERT_EQ(stat(path("a b%.txt").c_str(), &status), 0);
    auto u = fileURL(path("a b%.txt"));
    std::string data;
    SInt32 error = 1;
    CFDictionaryRef properties = nullptr;
    EXPECT_TRUE(read(u, data, error, &properties));
    EXPECT_EQ(data, std::string("hello\0world", 11));
    // A regular file has no directory contents: reported, but not a failure.
    EXPECT_EQ(error, kCFURLUnknownError);
    ASSERT_NE(properties, nullptr);
    auto owned = own(properties);
    EXPECT_EQ(CFDictionaryGetCount(properties), 5);
    EXPECT_EQ(CFDictionaryGetValue(properties, kCFURLFileExists), kCFBooleanTrue);
    EXPECT_EQ(int64Value(CFDictionaryGetValue(properties, kCFURLFileLength)), 11);
    EXPECT_EQ(int64Value(CFDictionaryGetValue(properties, kCFURLFilePOSIXMode)), SInt64(status.st_mode));
    EXPECT_EQ(int64Value(CFDictionaryGetValue(properties, kCFURLFileOwnerID)), SInt64(status.st_uid));
    auto modified = static_cast<CFDateRef>(CFDictionaryGetValue(properties, kCFURLFileLastModificationTime));
    EXPECT_DOUBLE_EQ(CFDateGetAbsoluteTime(modified), double(status.st_mtim.tv_sec) - kCFAbsoluteTimeIntervalSince1970 +
                                                          double(status.st_mtim.tv_nsec) / 1e9);

    // Relative to a directory base, with an upper-case scheme, and empty.
    writeFile("empty", "");
    auto relative = url("empty", fileURL(directory_, true));
    EXPECT_TRUE(read(relative, data, error));
    EXPECT_EQ(data, "");
    EXPECT_EQ(error, 0);
    EXPECT_TRUE(read(url("FILE://" + directory_ + "/empty"), data, error));
    EXPECT_EQ(error, 0);

    // Data that cannot be made is a failed read.
    CFDataRef none = nullptr;
    EXPECT_FALSE(CFURLCreateDataAndPropertiesFromResource(kCFAllocatorNull, u, &none, nullptr, nullptr, &error));
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(error, kCFURLUnknownError);
}

TEST_F(URLAccess, MissingFilesDirectoriesAndOtherSchemesFail) {
    std::string data;
    SInt32 error = 0;
    EXPECT_FALSE(read(fileURL(path("missing")), data, error));
    EXPECT_EQ(data, "<NULL>");
    EXPECT_EQ(error, kCFURLUnknownError);

    // Only existence asked: false, and no error.
    CFDataRef* noData = nullptr;
    CFDictionaryRef properties = nullptr;
    const void* existsOnly[] = {kCFURLFileExists};
    auto desired = own(CFArrayCreate(nullptr, existsOnly, 1, &kCFTypeArrayCallBacks));
    EXPECT_TRUE(CFURLCreateDataAndPropertiesFromResource(nullptr, fileURL(path("missing")), noData, &properties,
                                                         desired, &error));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(CFDictionaryGetValue(properties, kCFURLFileExists), kCFBooleanFalse);
    EXPECT_EQ(CFDictionaryGetCount(properties), 1);
    CFRelease(properties);

    // A directory cannot be read as data; its contents come sorted, as URLs.
    ASSERT_EQ(mkdir(path("sub").c_str(), 0755), 0);
    writeFile("sub/b.txt", "b");
    ASSERT_EQ(mkdir(path("sub/a dir").c_str(), 0755), 0);
    const void* contentsAndUnknown[] = {kCFURLFileDirectoryContents, CFSTR("kCFURLNoSuchKey"), kCFURLFileExists};
    auto desiredContents = own(CFArrayCreate(nullptr, contentsAndUnknown, 3, &kCFTypeArrayCallBacks));
    EXPECT_FALSE(read(fileURL(path("sub"), true), data, error, &properties, desiredContents));
    EXPECT_EQ(data, "<NULL>");
    EXPECT_EQ(error, kCFURLUnknownError);
    ASSERT_NE(properties, nullptr);
    auto contents = static_cast<CFArrayRef>(CFDictionaryGetValue(properties, kCFURLFileDirectoryContents));
    ASSERT_EQ(CFArrayGetCount(contents), 2);
    auto first = static_cast<CFURLRef>(CFArrayGetValueAtIndex(contents, 0));
    EXPECT_EQ(urlText(first), "file://" + directory_ + "/sub/a%20dir/");
    EXPECT_TRUE(CFURLHasDirectoryPath(first));
    EXPECT_EQ(urlText(static_cast<CFURLRef>(CFArrayGetValueAtIndex(contents, 1))),
              "file://" + directory_ + "/sub/b.txt");
    EXPECT_EQ(CFDictionaryGetValue(properties, kCFURLFileExists), kCFBooleanTrue);
    CFRelease(properties);

    error = 0;
    EXPECT_TRUE(CFURLCreateDataAndPropertiesFromResource(nullptr, fileURL(path("sub")), nullptr, &properties,
                                                         desiredContents, &error));
    EXPECT_EQ(error, kCFURLUnknownPropertyKeyError);
    CFRelease(properties);

    EXPECT_FALSE(read(url("http://example.invalid/x"), data, error));
    EXPECT_EQ(error, kCFURLUnknownSchemeError);
    EXPECT_FALSE(read(url("relative/file"), data, error));
    EXPECT_EQ(error, kCFURLImproperArgumentsError);
    std::string reports = reportsOf([&] { EXPECT_FALSE(read(nullptr, data, error)); });
    EXPECT_EQ(error, kCFURLImproperArgumentsError);
    EXPECT_EQ(lineCount(reports), 1);
}

TEST_F(URLAccess, UnreadableFilesFailWithoutRoot) {
    if (geteuid() == 0) GTEST_SKIP() << "root reads files whatever their mode";
    writeFile("secret", "x");
    ASSERT_EQ(chmod(path("secret").c_str(), 0), 0);
    std::string data;
    SInt32 error = 0;
    EXPECT_FALSE(read(fileURL(path("secret")), data, error));
    EXPECT_EQ(error, kCFURLUnknownError);
}

TEST_F(URLAccess, DataURLsAreDecoded) {
    std::string data;
    SInt32 error = 1;
    EXPECT_TRUE(read(url("data:,Hello%2C%20World#ignored"), data, error));
    EXPECT_EQ(data, "Hello, World");
    EXPECT_EQ(error, 0);
    EXPECT_TRUE(read(url("data:text/plain;BASE64,SGVs%0AbG8="), data, error));
    EXPECT_EQ(data, "Hello");
    EXPECT_TRUE(read(url("data:;base64,AP8"), data, error));
    EXPECT_EQ(data, std::string("\0\xFF", 2));
    EXPECT_FALSE(read(url("data:;base64,!!"), data, error));
    EXPECT_EQ(error, kCFURLUnknownError);
    EXPECT_FALSE(read(url("data:no-comma"), data, error));
    EXPECT_EQ(data, "<NULL>");
}

TEST_F(URLAccess, WritesCreateAndAtomicallyReplaceFiles) {
    SInt32 error = 1;
    auto u = fileURL(path("new file"));
    EXPECT_TRUE(write(u, "first", error));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(readFile(path("new file")), "first");
    struct stat status;
    ASSERT_EQ(stat(path("new file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u);  // 0666 under the umask

    // An existing file keeps its mode; the new contents arrive as a new inode.
    ASSERT_EQ(chmod(path("new file").c_str(), 0600), 0);
    ino_t before = status.st_ino;
    EXPECT_TRUE(write(u, "second, longer", error));
    ASSERT_EQ(stat(path("new file").c_str(), &status), 0);
    EXPECT_EQ(readFile(path("new file")), "second, longer");
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_NE(status.st_ino, before);
    EXPECT_EQ(entries(), std::vector<std::string>{"new file"});

    // The mode property applies to the file written, or alone without data.
    EXPECT_TRUE(write(u, "third", error, modeProperty(0640)));
    ASSERT_EQ(stat(path("new file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_TRUE(CFURLWriteDataAndPropertiesToResource(u, nullptr, modeProperty(0604), &error));
    ASSERT_EQ(stat(path("new file").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0604u);
    EXPECT_EQ(readFile(path("new file")), "third");

    // Any other property refuses the call before anything is written.
    const void* keys[] = {kCFURLFileLength};
    const void* values[] = {kCFBooleanTrue};
    auto other = own(
        CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    EXPECT_FALSE(write(u, "fourth", error, other));
    EXPECT_EQ(error, kCFURLUnknownError);
    EXPECT_EQ(readFile(path("new file")), "third");

    // Through a symbolic link the link stays and its target is replaced.
    ASSERT_EQ(symlink(path("new file").c_str(), path("link").c_str()), 0);
    EXPECT_TRUE(write(fileURL(path("link")), "via link", error));
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(readFile(path("new file")), "via link");
}

TEST_F(URLAccess, FailedWritesLeaveTheOldFileIntact) {
    writeFile("kept", "old contents");
    auto u = fileURL(path("kept"));
    SInt32 error = 0;

    // The file-size limit stops the write part-way.
    struct rlimit previous;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &previous), 0);
    auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limited = previous;
    limited.rlim_cur = 1000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    bool written = write(u, std::string(5000, 'x'), error);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &previous), 0);
    std::signal(SIGXFSZ, previousHandler);
    EXPECT_FALSE(written);
    EXPECT_EQ(error, kCFURLUnknownError);
    EXPECT_EQ(readFile(path("kept")), "old contents");
    EXPECT_EQ(entries(), std::vector<std::string>{"kept"});

    EXPECT_FALSE(write(fileURL(path("no such dir/f")), "x", error));
    EXPECT_EQ(error, kCFURLUnknownError);
    ASSERT_EQ(mkdir(path("dir").c_str(), 0755), 0);
    EXPECT_FALSE(write(fileURL(path("dir")), "x", error));
    EXPECT_EQ(error, kCFURLUnknownError);
    EXPECT_TRUE(fs::is_directory(path("dir")));

    EXPECT_FALSE(write(url("FILE://" + path("kept")), "x", error));
    EXPECT_EQ(error, kCFURLUnknownSchemeError);
    EXPECT_FALSE(write(url("http://h/x"), "x", error));
    EXPECT_EQ(error, kCFURLUnknownSchemeError);
    EXPECT_FALSE(write(url("relative"), "x", error));
    EXPECT_EQ(error, kCFURLImproperArgumentsError);
    std::string reports = reportsOf([&] { EXPECT_FALSE(write(nullptr, "x", error)); });
    EXPECT_EQ(error, kCFURLImproperArgumentsError);
    EXPECT_EQ(lineCount(reports), 1);
    EXPECT_EQ(readFile(path("kept")), "old contents");
}

TEST_F(URLAccess, DirectoryURLsWithDataCreateDirectories) {
    SInt32 error = 1;
    auto u = fileURL(path("made"), true);
    EXPECT_TRUE(write(u, "ignored", error));
    EXPECT_EQ(error, 0);
    EXPECT_TRUE(fs::is_directory(path("made")));
    EXPECT_FALSE(write(u, "ignored", error));
    EXPECT_EQ(error, kCFURLUnknownError);
}
