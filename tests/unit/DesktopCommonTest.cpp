// The rules both desktops share: how a file dialog turns a typed name into
// a path and when it refuses it, the dates a picker takes, control types
// from class names, and item lookup by text.
#include "ui/ControlKinds.h"
#include "ui/DesktopCommon.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace ob;
using namespace ob::ui;

namespace {

namespace fs = std::filesystem;

class DesktopFileNames : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("ob_names_" + std::to_string(getpid()));
        fs::create_directories(m_dir / "sub");
        std::ofstream(m_dir / "has.ext") << "x";
    }
    void TearDown() override { fs::remove_all(m_dir); }

    FileDialogRequest Request(bool save, const char16_t* extension) const {
        FileDialogRequest r;
        r.save = save;
        r.defaultExtension = extension;
        r.initialFolder = CString::FromUtf8(m_dir.string());
        return r;
    }
    std::string In(const std::string& name) const { return (m_dir / name).string(); }

    fs::path m_dir;
};

TEST_F(DesktopFileNames, TypedNamesAreTakenFromTheInitialFolderWithTheDefaultExtension) {
    FileDialogRequest r = Request(true, u".txt");   // a leading dot is not doubled
    EXPECT_EQ(common::ResolveFileName(u"new", r).string(), In("new.txt"));
    EXPECT_EQ(common::ResolveFileName(u"has.ext", r).string(), In("has.ext"));   // its own extension stays
    EXPECT_EQ(common::ResolveFileName(u"sub/../b", r).string(), In("b.txt"));    // normalised
    EXPECT_EQ(common::ResolveFileName(u"/tmp/abs", r).string(), "/tmp/abs.txt");  // the folder is for relative names
    EXPECT_EQ(common::ResolveFileName(u"plain", Request(true, u"")).string(), In("plain"));
}

TEST_F(DesktopFileNames, OpenWantsAnExistingFileAndSaveAnExistingFolder) {
    CString chosen;
    EXPECT_TRUE(common::ChooseFile(u"has.ext", Request(false, u""), chosen).empty());
    EXPECT_EQ(chosen.ToUtf8(), In("has.ext"));

    chosen.clear();
    EXPECT_EQ(common::ChooseFile(u"none", Request(false, u""), chosen).ToUtf8(), "no file \"" + In("none") + "\"");
    EXPECT_EQ(common::ChooseFile(u"sub", Request(false, u""), chosen).ToUtf8(), "\"" + In("sub") + "\" is a folder");
    EXPECT_EQ(common::ChooseFile(u"", Request(false, u""), chosen).ToUtf8(), "no file name");
    EXPECT_TRUE(chosen.empty());   // a refused name chooses nothing

    EXPECT_TRUE(common::ChooseFile(u"sub/new", Request(true, u"txt"), chosen).empty());
    EXPECT_EQ(chosen.ToUtf8(), In("sub/new.txt"));
    EXPECT_EQ(common::ChooseFile(u"gone/new", Request(true, u""), chosen).ToUtf8(),
              "no folder for \"" + In("gone/new") + "\"");
    EXPECT_EQ(common::ChooseFile(u"sub/", Request(true, u"txt"), chosen).ToUtf8(), "\"" + In("sub/") + "\" is a folder");
}

TEST(DesktopCommon, PickersTakeRealDatesOfYears100To9999) {
    EXPECT_TRUE(ValidTime({2024, 2, 29, 23, 59, 59}));
    EXPECT_TRUE(ValidTime({2000, 2, 29, 0, 0, 0}));    // every 400 years a leap year
    EXPECT_FALSE(ValidTime({1900, 2, 29, 0, 0, 0}));   // but not every 100
    EXPECT_FALSE(ValidTime({2023, 4, 31, 0, 0, 0}));
    EXPECT_TRUE(ValidTime({100, 1, 1, 0, 0, 0}));
    EXPECT_FALSE(ValidTime({99, 12, 31, 0, 0, 0}));
    EXPECT_FALSE(ValidTime({10000, 1, 1, 0, 0, 0}));
    EXPECT_FALSE(ValidTime({2024, 1, 1, 24, 0, 0}));
    EXPECT_FALSE(ValidTime({2024, 1, 1, 0, 60, 0}));
    EXPECT_FALSE(ValidTime({2024, 0, 1, 0, 0, 0}));
}

TEST(DesktopCommon, ControlTypesComeFromClassAndStyleIgnoringCase) {
    EXPECT_EQ(ControlTypeOf(u"BUTTON", BS_AUTOCHECKBOX), ControlType::CheckBox);
    EXPECT_EQ(ControlTypeOf(u"button", BS_AUTORADIOBUTTON), ControlType::RadioButton);
    EXPECT_EQ(ControlTypeOf(u"Button", BS_GROUPBOX), ControlType::GroupBox);
    EXPECT_EQ(ControlTypeOf(u"Button", BS_DEFPUSHBUTTON), ControlType::PushButton);
    EXPECT_EQ(ControlTypeOf(u"systreeview32", 0), ControlType::TreeView);
    EXPECT_EQ(ControlTypeOf(u"scrollbar", 0), ControlType::ScrollBar);   // known, though it takes no messages
    EXPECT_EQ(ControlTypeOf(u"RichEdit", 0), ControlType::Other);
}

TEST(DesktopCommon, ItemsMatchExactlyBeforeIgnoringCase) {
    std::vector<CString> items{u"apple", u"Apple", u"pear"};
    EXPECT_EQ(common::FindItem(items, u"Apple"), 1);
    EXPECT_EQ(common::FindItem(items, u"PEAR"), 2);
    EXPECT_EQ(common::FindItem(items, u"plum"), -1);
    int number = 0;
    EXPECT_TRUE(common::MenuItemByText(items, u"APPLE", number).empty());
    EXPECT_EQ(number, 1);   // menu items count from 1
    EXPECT_EQ(common::MenuItemByText(items, u"plum", number).ToUtf8(), "no item \"plum\" in the menu");
    EXPECT_TRUE(common::MenuNumberRefusal(items, 0).empty());   // 0 dismisses
    EXPECT_EQ(common::MenuNumberRefusal(items, 4).ToUtf8(), "no item 4 in the menu");
}

}  // namespace
