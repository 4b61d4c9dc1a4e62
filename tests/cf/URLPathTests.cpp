// CFURL paths: file-system paths in both styles and both directions (with
// the current directory as base for relative paths), and the path
// arithmetic that makes new URLs.
#include "MisuseReports.h"
#include "URLTestSupport.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>

using namespace cftest;

namespace {

Owned<CFURLRef> filePath(const std::string& path, CFURLPathStyle style, bool isDirectory = false) {
    return own(CFURLCreateWithFileSystemPath(nullptr, str(path), style, isDirectory));
}

std::string pathOf(CFURLRef u, CFURLPathStyle style) {
    return take(CFURLCopyFileSystemPath(u, style));
}

std::string appending(CFURLRef u, const std::string& component, bool isDirectory = false) {
    auto result = own(CFURLCreateCopyAppendingPathComponent(nullptr, u, str(component), isDirectory));
    return urlText(result);
}

std::string deletingLast(CFURLRef u) {
    return urlText(own(CFURLCreateCopyDeletingLastPathComponent(nullptr, u)));
}

std::string appendingExtension(CFURLRef u, const std::string& extension) {
    return urlText(own(CFURLCreateCopyAppendingPathExtension(nullptr, u, str(extension))));
}

std::string deletingExtension(CFURLRef u) {
    return urlText(own(CFURLCreateCopyDeletingPathExtension(nullptr, u)));
}

// Runs the test body in a fresh directory whose name needs no escaping.
class URLRelativePaths : public testing::Test {
protected:
    void SetUp() override {
        char previous[PATH_MAX];
        ASSERT_NE(getcwd(previous, sizeof previous), nullptr);
        previous_ = previous;
        char name[] = "/tmp/urlpaths.XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        directory_ = name;
        ASSERT_EQ(chdir(name), 0);
    }
    void TearDown() override {
        EXPECT_EQ(chdir(previous_.c_str()), 0);
        rmdir(directory_.c_str());
    }
    std::string directory_;
    std::string previous_;
};

}  // namespace

TEST(URLFileSystemPath, POSIXPathsAreEscapedBytesUnderFile) {
    auto spaced = filePath("/tmp/a b.txt", kCFURLPOSIXPathStyle);
    EXPECT_EQ(urlText(spaced), "file:///tmp/a%20b.txt");
    EXPECT_EQ(CFURLGetBaseURL(spaced), nullptr);
    EXPECT_FALSE(CFURLHasDirectoryPath(spaced));
    auto directory = filePath("/tmp", kCFURLPOSIXPathStyle, true);
    EXPECT_EQ(urlText(directory), "file:///tmp/");
    EXPECT_TRUE(CFURLHasDirectoryPath(directory));
    EXPECT_EQ(urlText(filePath("/tmp/", kCFURLPOSIXPathStyle)), "file:///tmp");
    EXPECT_EQ(urlText(filePath("/tmp//", kCFURLPOSIXPathStyle, true)), "file:///tmp//");
    EXPECT_EQ(urlText(filePath("//", kCFURLPOSIXPathStyle)), "file:///");
    auto root = filePath("/", kCFURLPOSIXPathStyle);
    EXPECT_EQ(urlText(root), "file:///");
    EXPECT_FALSE(CFURLHasDirectoryPath(root));
    EXPECT_TRUE(CFURLHasDirectoryPath(filePath("/", kCFURLPOSIXPathStyle, true)));
    EXPECT_EQ(urlText(filePath("/a%b;c?d#e[f]g é\x7f", kCFURLPOSIXPathStyle)),
              "file:///a%25b%3Bc%3Fd%23e%5Bf%5Dg%20%C3%A9%7F");
    EXPECT_EQ(urlText(filePath("/AZaz09!$&'()*+,-.:=@_~", kCFURLPOSIXPathStyle)), "file:///AZaz09!$&'()*+,-.:=@_~");

    EXPECT_FALSE(filePath("", kCFURLPOSIXPathStyle));
    const UniChar lone[] = {'/', 0xDC00};
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, own(CFStringCreateWithCharacters(nullptr, lone, 2)),
                                            kCFURLPOSIXPathStyle, false),
              nullptr);
    std::string reports = reportsOf([] {
        EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, nullptr, kCFURLPOSIXPathStyle, false), nullptr);
        EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, CFSTR("/tmp"), kCFURLHFSPathStyle, false), nullptr);
        EXPECT_EQ(CFURLCopyFileSystemPath(url("file:///"), 7), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 3);

    const std::pair<const char*, const char*> paths[] = {
        {"file:///tmp/a%20b.txt", "/tmp/a b.txt"},
        {"file:///tmp/", "/tmp"},
        {"file:///", "/"},
        {"file://localhost/tmp", "/tmp"},
        {"http://h/a%20b", "/a b"},
        {"a/b/", "a/b"},
        {"http://h", ""},
        {"file:///a/%FF", "<NULL>"},
        {"mailto:x", "<NULL>"},
        {"file:///C:/dir", "/C:/dir"},
    };
    for (const auto& [text, expected] : paths) {
        EXPECT_EQ(pathOf(url(text), kCFURLPOSIXPathStyle), expected) << text;
    }
    EXPECT_EQ(pathOf(spaced, kCFURLPOSIXPathStyle), "/tmp/a b.txt");
    EXPECT_EQ(pathOf(filePath("/é ü", kCFURLPOSIXPathStyle), kCFURLPOSIXPathStyle), "/é ü");
}

TEST_F(URLRelativePaths, RelativePathsTakeTheCurrentDirectoryAsBase) {
    std::string cwd = "file://" + directory_ + "/";
    auto relative = filePath("a/b", kCFURLPOSIXPathStyle);
    EXPECT_EQ(urlText(relative), "a/b");
    ASSERT_NE(CFURLGetBaseURL(relative), nullptr);
    EXPECT_EQ(urlText(CFURLGetBaseURL(relative)), cwd);
    EXPECT_TRUE(CFURLHasDirectoryPath(CFURLGetBaseURL(relative)));
    EXPECT_EQ(absoluteText(relative), cwd + "a/b");
    EXPECT_EQ(pathOf(relative, kCFURLPOSIXPathStyle), "a/b");

    // A first segment that reads like a scheme keeps the URL relative.
    auto colon = filePath("c:x/y", kCFURLPOSIXPathStyle);
    EXPECT_EQ(urlText(colon), "c%3Ax/y");
    EXPECT_EQ(pathOf(colon, kCFURLPOSIXPathStyle), "c:x/y");

    auto windows = filePath("dir\\file.txt", kCFURLWindowsPathStyle);
    EXPECT_EQ(urlText(windows), "dir/file.txt");
    EXPECT_EQ(urlText(CFURLGetBaseURL(windows)), cwd);

    auto base = url("http://h/root/");
    auto againstBase =
        own(CFURLCreateWithFileSystemPathRelativeToBase(nullptr, CFSTR("x y"), kCFURLPOSIXPathStyle, true, base));
    EXPECT_EQ(urlText(againstBase), "x%20y/");
    EXPECT_EQ(absoluteText(againstBase), "http://h/root/x%20y/");
}

TEST(URLFileSystemPath, WindowsPathsAreTextInBothDirections) {
    struct Row {
        const char* path;
        bool isDirectory;
        const char* url;
        const char* back;
    };
    const Row rows[] = {
        {"C:\\dir\\file.txt", false, "file:///C:/dir/file.txt", "C:\\dir\\file.txt"},
        {"C:\\My Docs\\a b.txt", false, "file:///C:/My%20Docs/a%20b.txt", "C:\\My Docs\\a b.txt"},
        {"C:\\dir", true, "file:///C:/dir/", "C:\\dir"},
        {"C:\\", false, "file:///C:", "C:"},
        {"C:\\", true, "file:///C:/", "C:"},
        {"\\dir\\f", false, "file:///dir/f", "\\dir\\f"},
        {"\\\\server\\share\\f", false, "file://///server/share/f", "\\\\\\server\\share\\f"},
        {"dir\\file.txt", false, "dir/file.txt", "dir\\file.txt"},
        {"C|\\dir", false, "file:///C%7C/dir", "C:\\dir"},
        {"C:/dir/f", false, "file:///C:/dir/f", "C:\\dir\\f"},
        {"c:\\a%b#\\é", false, "file:///c:/a%25b%23/%C3%A9", "c:\\a%b#\\é"},
        {"/tmp/x y", false, "file:///tmp/x%20y", "\\tmp\\x y"},
        {"\\", false, "file:///", "\\"},
    };
    for (const Row& row : rows) {
        auto u = filePath(row.path, kCFURLWindowsPathStyle, row.isDirectory);
        ASSERT_TRUE(u) << row.path;
        EXPECT_EQ(urlText(u), row.url) << row.path;
        EXPECT_EQ(bool(CFURLHasDirectoryPath(u)), row.isDirectory) << row.path;
        EXPECT_EQ(pathOf(u, kCFURLWindowsPathStyle), row.back) << row.path;
    }
    EXPECT_EQ(pathOf(url("file:///C:/"), kCFURLWindowsPathStyle), "C:");
    EXPECT_EQ(pathOf(url("file:///C%3a/x/"), kCFURLWindowsPathStyle), "C:\\x");
    EXPECT_EQ(pathOf(url("http://h"), kCFURLWindowsPathStyle), "");
    EXPECT_EQ(pathOf(url("file:///%FF"), kCFURLWindowsPathStyle), "<NULL>");
    EXPECT_EQ(pathOf(url("mailto:x"), kCFURLWindowsPathStyle), "<NULL>");
    EXPECT_FALSE(filePath("", kCFURLWindowsPathStyle));
}

TEST(URLPathArithmetic, AppendingPathComponents) {
    EXPECT_EQ(appending(url("file:///tmp"), "a b"), "file:///tmp/a%20b");
    auto directory = own(CFURLCreateCopyAppendingPathComponent(nullptr, url("file:///tmp/"), CFSTR("x"), true));
    EXPECT_EQ(urlText(directory), "file:///tmp/x/");
    EXPECT_TRUE(CFURLHasDirectoryPath(directory));
    EXPECT_EQ(appending(url("http://h"), "p"), "http://h/p");
    EXPECT_EQ(appending(url("http://h/p?q"), "x"), "http://h/p/x?q");
    EXPECT_EQ(appending(url("http://h/p"), "x?y"), "http://h/p/x%3Fy");
    EXPECT_EQ(appending(url("file:///tmp/"), "/x"), "file:///tmp//x");
    EXPECT_EQ(appending(url("file:///tmp"), "/x"), "file:///tmp/x");
    EXPECT_EQ(appending(url("file:///t"), "a;b?c#d%e[é]//"), "file:///t/a%3Bb%3Fc%23d%25e%5B%C3%A9%5D");
    EXPECT_EQ(appending(url("http://h/p#f"), "a b#c/"), "http://h/p/a%20b%23c/#f");
    EXPECT_EQ(appending(url("http://h/p"), "x", true), "http://h/p/x/");
    EXPECT_EQ(appending(url("mailto:a@b"), "x"), "<NULL>");
    // The new path never reads as a net location.
    auto rootOnly = own(CFURLCreateCopyAppendingPathComponent(nullptr, url("file:/"), CFSTR("/x"), false));
    EXPECT_EQ(urlText(rootOnly), "file:/.//x");
    EXPECT_EQ(take(CFURLCopyNetLocation(rootOnly)), "<NULL>");
    EXPECT_EQ(pathOf(rootOnly, kCFURLPOSIXPathStyle), "/.//x");

    // New URLs share the base; a file base makes the URL a file URL.
    auto base = url("file:///tmp/");
    auto relative = url("dir", base);
    EXPECT_EQ(CFGetRetainCount(base), 2);
    auto appended = own(CFURLCreateCopyAppendingPathComponent(nullptr, relative, CFSTR("x/"), false));
    EXPECT_EQ(urlText(appended), "dir/x");
    EXPECT_EQ(CFURLGetBaseURL(appended), base.get());
    EXPECT_EQ(CFGetRetainCount(base), 3);
    EXPECT_EQ(absoluteText(appended), "file:///tmp/dir/x");

    std::string reports = reportsOf([] {
        EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, CFSTR("x"), false), nullptr);
        EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, url("http://h"), nullptr, false), nullptr);
    });
    EXPECT_EQ(lineCount(reports), 2);
}

TEST(URLPathArithmetic, DeletingLastPathComponents) {
    const std::pair<const char*, const char*> cases[] = {
        {"file:///a/b/c", "file:///a/b/"},
        {"file:///a/b/", "file:///a/"},
        {"file:///a", "file:///"},
        {"http://h/p/x?q", "http://h/p/?q"},
        {"file:///", "file:///../"},
        {"file:///a/..", "file:///a/../../"},
        {"file:///a/../", "file:///a/../../"},
        {"file:///a/.", "file:///a/../"},
        {".", "../"},
        {"http://h", "http://h../"},
        {"foo", "./"},
        {"foo/", "./"},
        {"a/b#f", "a/#f"},
        {"mailto:x", "<NULL>"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(deletingLast(url(text)), expected) << text;
    }
    auto base = url("http://h/d/");
    auto shorter = own(CFURLCreateCopyDeletingLastPathComponent(nullptr, url("x/y", base)));
    EXPECT_EQ(urlText(shorter), "x/");
    EXPECT_EQ(CFURLGetBaseURL(shorter), base.get());
    EXPECT_TRUE(CFURLHasDirectoryPath(shorter));
}

TEST(URLPathArithmetic, AppendingAndDeletingExtensions) {
    EXPECT_EQ(appendingExtension(url("file:///a/b"), "txt"), "file:///a/b.txt");
    auto directory = own(CFURLCreateCopyAppendingPathExtension(nullptr, url("file:///a/dir/"), CFSTR("bak")));
    EXPECT_EQ(urlText(directory), "file:///a/dir.bak/");
    EXPECT_TRUE(CFURLHasDirectoryPath(directory));
    EXPECT_EQ(appendingExtension(url("file:///"), "txt"), "file:///.txt");
    EXPECT_EQ(appendingExtension(url("http://h"), "txt"), "http://h.txt");
    EXPECT_EQ(appendingExtension(url("file:///a/b?q"), "tar.gz"), "file:///a/b.tar.gz?q");
    EXPECT_EQ(appendingExtension(url("file:///a/b"), "a b.t%t"), "file:///a/b.a%20b.t%25t");
    for (const char* invalid : {"txt.", "a/b", " txt", "a b", "t\xE2\x80\x8Ex", "."}) {
        EXPECT_EQ(appendingExtension(url("file:///a/b"), invalid), "<NULL>") << invalid;
    }
    EXPECT_EQ(appendingExtension(url("mailto:a@b"), "txt"), "<NULL>");
    EXPECT_EQ(appendingExtension(url("a"), "b:c"), "a.b%3Ac");  // stays relative, no scheme "a.b"
    auto u = url("file:///a/b");
    auto same = own(CFURLCreateCopyAppendingPathExtension(nullptr, u, CFSTR("")));
    EXPECT_EQ(same.get(), u.get());
    EXPECT_EQ(CFGetRetainCount(u), 2);

    EXPECT_EQ(deletingExtension(url("file:///a/b.tar.gz")), "file:///a/b.tar");
    EXPECT_EQ(deletingExtension(url("file:///a/b.txt/")), "file:///a/b/");
    EXPECT_EQ(deletingExtension(url("http://h/b.txt?q#f")), "http://h/b?q#f");
    EXPECT_EQ(deletingExtension(url("file:///a/b.%20x")), "file:///a/b");  // the rule reads the escaped text
    EXPECT_EQ(deletingExtension(url("mailto:a.b")), "<NULL>");
    for (const char* unchanged : {"file:///a/b", "file:///a/.bashrc", "file:///a/b.", "file:///"}) {
        auto original = url(unchanged);
        auto result = own(CFURLCreateCopyDeletingPathExtension(nullptr, original));
        EXPECT_EQ(result.get(), original.get()) << unchanged;
        EXPECT_EQ(CFGetRetainCount(original), 2) << unchanged;
    }
}
