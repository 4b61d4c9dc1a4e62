// HVString: path arithmetic with both separators and drive roots, the home
// directory, and percent escapes.
#include <halvane/text/HVString.h>

#include <gtest/gtest.h>

#include "TextTestSupport.h"

using hvtest::unitsOf;

namespace {

std::u16string appended(const char* path, const char* component) {
    return unitsOf(HVString(path).StringByAppendingPathComponent(component));
}

std::u16string parentOf(const char* path) {
    return unitsOf(HVString(path).StringByDeletingLastPathComponent());
}

}  // namespace

TEST(StringPaths, AppendingComponentsUsesTheTextsOwnSeparator) {
    EXPECT_EQ(appended("dir\\", "f"), u"dir\\f");
    EXPECT_EQ(appended("dir/", "f"), u"dir/f");
    EXPECT_EQ(appended("a\\b", "c"), u"a\\b\\c");
    EXPECT_EQ(appended("a/b", "c"), u"a/b/c");
    EXPECT_EQ(appended("name", "c"), u"name/c");
    EXPECT_EQ(appended("C:\\", "Users"), u"C:\\Users");
    EXPECT_EQ(appended("", "c"), u"c");
    HVString receiver("kept");
    EXPECT_EQ(receiver.StringByAppendingPathComponent("").Ref(), receiver.Ref());
    // "/" is the separator wherever both occur; the receiver ends with a
    // "\" that is therefore not taken for its separator.
    EXPECT_EQ(appended("a/b\\", "c"), u"a/b\\/c");
    EXPECT_EQ(appended("a\\b/c", "d"), u"a\\b/c/d");
}

TEST(StringPaths, AppendingExtensions) {
    EXPECT_EQ(unitsOf(HVString("file").StringByAppendingPathExtension("txt")), u"file.txt");
    EXPECT_EQ(unitsOf(HVString("archive.tar").StringByAppendingPathExtension("gz")), u"archive.tar.gz");
    EXPECT_EQ(unitsOf(HVString("file").StringByAppendingPathExtension("")), u"file.");
    EXPECT_EQ(unitsOf(HVString("").StringByAppendingPathExtension("txt")), u".txt");
}

TEST(StringPaths, DeletingTheLastComponentKeepsRoots) {
    EXPECT_EQ(parentOf("C:\\dir"), u"C:\\");
    EXPECT_EQ(parentOf("c:/dir"), u"c:/");
    EXPECT_EQ(parentOf("C:\\dir\\file.txt"), u"C:\\dir");
    EXPECT_EQ(parentOf("/a"), u"/");
    EXPECT_EQ(parentOf("\\a"), u"\\");
    EXPECT_EQ(parentOf("/a/b"), u"/a");
    EXPECT_EQ(parentOf("a/b/"), u"a");
    EXPECT_EQ(parentOf("a\\b\\"), u"a");
    // After a trailing separator was passed over, roots are not kept.
    EXPECT_EQ(parentOf("/a/"), u"");
    EXPECT_EQ(parentOf("C:\\dir\\"), u"C:");
    EXPECT_EQ(parentOf("C:\\"), u"");
    EXPECT_EQ(parentOf("/"), u"");
    EXPECT_EQ(parentOf("a/"), u"");
    EXPECT_EQ(parentOf("name"), u"");
    EXPECT_EQ(parentOf(""), u"");
    // Only a letter and a colon make a drive.
    EXPECT_EQ(parentOf("1:\\dir"), u"1:");
    EXPECT_EQ(parentOf("\\\\server\\share"), u"\\\\server");
    // "/" is looked for first, even before a later "\".
    EXPECT_EQ(parentOf("a/b\\c"), u"a");
}

TEST(StringPaths, LastComponentAndExtension) {
    EXPECT_EQ(unitsOf(HVString("C:\\dir\\file.txt").LastPathComponent()), u"file.txt");
    EXPECT_EQ(unitsOf(HVString("/usr/lib/libx.so").LastPathComponent()), u"libx.so");
    EXPECT_EQ(unitsOf(HVString("name").LastPathComponent()), u"name");
    EXPECT_EQ(unitsOf(HVString("dir/").LastPathComponent()), u"");
    EXPECT_EQ(unitsOf(HVString("a\\b/c\\d").LastPathComponent()), u"c\\d");

    EXPECT_EQ(unitsOf(HVString("C:\\dir\\file.txt").PathExtension()), u"txt");
    EXPECT_EQ(unitsOf(HVString("archive.tar.gz").PathExtension()), u"gz");
    EXPECT_EQ(unitsOf(HVString("dir.d/file").PathExtension()), u"");
    EXPECT_EQ(unitsOf(HVString("dir.d\\file").PathExtension()), u"");
    EXPECT_EQ(unitsOf(HVString("file.").PathExtension()), u"");
    EXPECT_EQ(unitsOf(HVString("").PathExtension()), u"");

    EXPECT_EQ(unitsOf(HVString("C:\\dir\\file.txt").StringByDeletingPathExtension()), u"C:\\dir\\file");
    EXPECT_EQ(unitsOf(HVString("archive.tar.gz").StringByDeletingPathExtension()), u"archive.tar");
    EXPECT_EQ(unitsOf(HVString("dir.d/file").StringByDeletingPathExtension()), u"dir.d/file");
    EXPECT_EQ(unitsOf(HVString("Widget.txt").LastPathComponent().StringByDeletingPathExtension()), u"Widget");
}

TEST(StringPaths, ExpandingTheTilde) {
    hvtest::ScopedEnvironment home({{"HOME", "/home/tester"}});
    EXPECT_EQ(unitsOf(HVString("~/docs/a.txt").StringByExpandingTildeInPath()), u"/home/tester/docs/a.txt");
    EXPECT_EQ(unitsOf(HVString("~").StringByExpandingTildeInPath()), u"/home/tester");
    EXPECT_EQ(unitsOf(HVString("~/").StringByExpandingTildeInPath()), u"/home/tester");
    EXPECT_EQ(unitsOf(HVString("~\\docs").StringByExpandingTildeInPath()), u"/home/tester/docs");
    EXPECT_EQ(unitsOf(HVString("/tmp/~x").StringByExpandingTildeInPath()), u"/tmp/~x");
    EXPECT_EQ(unitsOf(HVString("").StringByExpandingTildeInPath()), u"");
}

TEST(StringPaths, ExpandingTheTildeJoinsWithTheHomesSeparator) {
    hvtest::ScopedEnvironment home({{"HOME", "C:\\Users\\me"}});
    EXPECT_EQ(unitsOf(HVString("~/docs").StringByExpandingTildeInPath()), u"C:\\Users\\me\\docs");
}

TEST(StringPercentEscapes, AddingEscapes) {
    EXPECT_EQ(unitsOf(HVString("a b/c").StringByAddingPercentEscapes()), u"a%20b/c");
    EXPECT_EQ(unitsOf(HVString(u"é€").StringByAddingPercentEscapes()), u"%C3%A9%E2%82%AC");
    EXPECT_EQ(unitsOf(HVString(":?=,!$&'()*+;[]@#").StringByAddingPercentEscapes()),
              u"%3A%3F%3D%2C%21%24%26%27%28%29%2A%2B%3B%5B%5D%40%23");
    EXPECT_EQ(unitsOf(HVString("100%\"<>").StringByAddingPercentEscapes()), u"100%25%22%3C%3E");
    EXPECT_EQ(unitsOf(HVString("safe-._~09AZaz").StringByAddingPercentEscapes()), u"safe-._~09AZaz");
    // The given characters replace the list of legal characters to escape.
    EXPECT_EQ(unitsOf(HVString("a/b:c d").StringByAddingPercentEscapesSpecifyingEscapeCharacters("/")), u"a%2Fb:c%20d");
    EXPECT_EQ(unitsOf(HVString("a/b:c").StringByAddingPercentEscapesSpecifyingEscapeCharacters("")), u"a/b:c");
    EXPECT_EQ(unitsOf(HVString("").StringByAddingPercentEscapes()), u"");
    // A lone surrogate has no UTF-8 form: the empty string.
    const char16_t lone[] = {u'a', 0xD800, 0};
    EXPECT_EQ(HVString(lone).StringByAddingPercentEscapes().Ref(), HVString::SharedEmptyObject());
}

TEST(StringPercentEscapes, ReplacingEscapesWithoutAListLeavesThemAll) {
    // No list of characters to leave escaped is passed, which the platform
    // takes as "replace none".
    EXPECT_EQ(unitsOf(HVString("a%20b%C3%A9").StringByReplacingPercentEscapes()), u"a%20b%C3%A9");
    EXPECT_EQ(unitsOf(HVString("a%20b").StringByReplacingPercentEscapesUsingEncoding(HVISOLatin1StringEncoding)),
              u"a%20b");
    EXPECT_EQ(unitsOf(HVString("plain").StringByReplacingPercentEscapes()), u"plain");
    EXPECT_EQ(unitsOf(HVString("").StringByReplacingPercentEscapes()), u"");
}
