// A tour of the library: strings, numbers, data, errors and collections,
// ending with the everyday job of an application: read its settings
// property list, change it, write it back and hand it on as JSON. Each section prints what it
// did, so the output reads as a short report.
#include <halvane/Halvane.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#ifndef HALVANE_DEMO_SETTINGS
#define HALVANE_DEMO_SETTINGS "settings.plist"
#endif

namespace {

void line(const HVString& text) { std::printf("%s\n", std::string(text).c_str()); }

// printf-style output; "%@" shows any object.
void show(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    line(HVString::StringWithFormatAndArguments(format, arguments));
    va_end(arguments);
}

void heading(const char* title) { std::printf("\n== %s ==\n", title); }

void strings() {
    heading("Strings");
    HVString title("Grüße aus Köln: the quarterly report");
    show("text:              %@ (%llu UTF-16 units)", title.Ref(), title.Length());
    show("upper case:        %@", title.UppercaseString().Ref());
    HVRange found = title.RangeOfStringWithOptions("KÖLN", HVCaseInsensitiveSearch);
    show("find \"KÖLN\":       location %llu, length %llu (case folded)", found.Location(), found.Length());
    HVArray words = title.ComponentsSeparatedByString(" ");
    show("words:             %llu, the last is \"%@\"", words.Count(), words.StringAtIndex(words.Count() - 1).Ref());

    HVString path("~/Documents/Quarterly Report.txt");
    show("path:              %@", path.Ref());
    show("  file name:       %@, extension \"%@\"", path.LastPathComponent().Ref(), path.PathExtension().Ref());
    show("  folder:          %@", path.StringByDeletingLastPathComponent().Ref());
    show("  escaped:         %@", path.StringByAddingPercentEscapes().Ref());

    HVString serialized = title.Serialize();
    HVString restored;
    restored.Deserialize(serialized);
    show("text form:         %@ -> equal after reading back: %s", serialized.Ref(), restored == title ? "yes" : "no");
}

void numbers() {
    heading("Numbers and booleans");
    HVNumber answer(42);
    HVNumber pi(3.25);
    HVNumber huge(18446744073709551615ull);
    show("numbers:           %@, %@, %@ (unsigned 64-bit kept exactly)", answer.Ref(), pi.Ref(), huge.Ref());
    show("pi as an integer:  %d; 42 as a double: %g", pi.IntValue(), answer.DoubleValue());
    show("from text:         \"  17 apples\" -> %d, \"2.5e3\" -> %g", HVString("  17 apples").IntValue(),
         HVString("2.5e3").DoubleValue());
    HVBool yes = HVBool::BoolFromObject(HVString("YES"));
    show("booleans:          \"YES\" reads as %s; the null object prints as %@", bool(yes) ? "true" : "false",
         HVNull().Ref());
}

void dataRoundTrips(const HVString& folder) {
    heading("Data");
    HVData bytes = HVString("Halvane \xE2\x9C\x93").DataContainingUTF8String();
    HVString hex = bytes.Serialize();
    show("UTF-8 bytes:       %llu, as text %@", bytes.Length(), hex.Ref());
    HVData fromText;
    fromText.Deserialize(hex);
    show("read back:         equal: %s", fromText == bytes ? "yes" : "no");

    HVString file = folder.StringByAppendingPathComponent("bytes.bin");
    HVError error;
    bool written = bytes.WriteToFile(file, error);
    HVData fromFile = HVData::DataWithContentsOfFile(file);
    show("file round trip:   written %s, %llu bytes read, equal: %s", written ? "yes" : "no", fromFile.Length(),
         fromFile == bytes ? "yes" : "no");
}

void errors() {
    heading("Errors and exceptions");
    HVError error = HVError::ErrorWithDomainCodeAndUserInfo(
        "DemoDomain", 7,
        HVError::DictionaryWithErrorDescriptionAndFailureReason("The settings could not be saved.",
                                                               "The disk is full."));
    show("error:             %@ %lld: %@ (%@)", error.Domain().Ref(), error.Code(),
         error.LocalizedDescription().Ref(), error.LocalizedFailureReason().Ref());

    HVArray empty;
    try {
        empty.ObjectAtIndex(3);
    } catch (HVException& exception) {
        show("exception:         %@: %@", exception.Name().Ref(), exception.Reason().Ref());
    }

    // A type mismatch never throws: it is reported through the error.
    HVMutableArray mixed;
    mixed.AddString("not a number");
    HVError mismatch;
    HVNumber number = mixed.NumberAtIndex(0, mismatch);
    show("type mismatch:     code %lld, \"%@\"", mismatch.Code(), mismatch.LocalizedFailureReason().Ref());
    (void)number;
}

void settings(const HVString& folder) {
    heading("Settings: read, change, write back");
    HVString source(HALVANE_DEMO_SETTINGS);
    HVString copy = folder.StringByAppendingPathComponent("settings.plist");
    HVData::DataWithContentsOfFile(source).WriteToFile(copy);

    HVMutableDictionary preferences(HVDictionary::DictionaryWithContentsOfFile(copy));
    show("read %llu settings from %@", preferences.Count(), copy.Ref());
    show("  theme %@, font size %g, auto-save every %d s, toolbar %s", preferences.StringForKey("Theme").Ref(),
         preferences.NumberForKey("FontSize").DoubleValue(), preferences.NumberForKey("AutoSaveInterval").IntValue(),
         bool(preferences.BoolForKey("ShowToolbar")) ? "shown" : "hidden");

    preferences.SetStringForKey("Dark", "Theme");
    preferences.SetNumberForKey(HVNumber(14.0), "FontSize");
    HVMutableArray recent = preferences.MutableArrayForKey("RecentDocuments");
    recent.InsertStringAtIndex("~/Documents/Budget 2027.numbers", 0);
    preferences.SetArrayForKey(recent, "RecentDocuments");
    preferences.SetNonEmptyStringForKey("", "LastOpenedDocument");  // an empty value removes the key
    bool saved = preferences.WriteToFile(copy);
    show("changed theme, font size, recent documents; removed the last document: saved %s", saved ? "yes" : "no");

    HVDictionary reread = HVDictionary::DictionaryWithContentsOfFile(copy);
    show("read back:         %llu settings, theme %@, %llu recent documents, equal to what was written: %s",
         reread.Count(), reread.StringForKey("Theme").Ref(), reread.ArrayForKey("RecentDocuments").Count(),
         reread == preferences ? "yes" : "no");
    line(HVString::StringWithContentsOfFileUsingEncoding(copy, HVUTF8StringEncoding));

    heading("Settings as JSON");
    HVError error;
    HVData json = HVJSONSerialization::JSONDataWithDictionary(reread, error);
    HVString jsonFile = folder.StringByAppendingPathComponent("settings.json");
    json.WriteToFile(jsonFile);
    line(HVString::StringWithDataUsingEncoding(json, HVUTF8StringEncoding));
    HVDictionary fromJSON = HVJSONSerialization::DictionaryWithJSONData(HVData::DataWithContentsOfFile(jsonFile));
    show("%llu bytes written to %@; read back equal to the settings: %s", json.Length(), jsonFile.Ref(),
         fromJSON == reread ? "yes" : "no");

    // A date has no JSON form: the error says so and nothing is written.
    HVMutableDictionary withDate(reread);
    withDate.SetDateForKey(HVDate::Now(), "LastSaved");
    HVData refused = HVJSONSerialization::JSONDataWithDictionary(withDate, error);
    show("with a date added: %llu bytes, error %lld: %@", refused.Length(), error.Code(),
         error.LocalizedFailureReason().Ref());
}

// A private folder for the files the demonstration writes.
HVString scratchFolder() {
    char pattern[] = "/tmp/halvane-demo-XXXXXX";
    const char* folder = mkdtemp(pattern);
    return folder != nullptr ? HVString(folder) : HVString("/tmp");
}

}  // namespace

int main() {
    std::printf("Halvane %s\n", HVLibraryVersion());
    HVString folder = scratchFolder();
    strings();
    numbers();
    dataRoundTrips(folder);
    errors();
    settings(folder);
    std::printf("\nFiles written under %s\n", std::string(folder).c_str());
    return 0;
}
