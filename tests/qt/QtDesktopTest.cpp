// The Qt desktop under Xvfb: how each control kind looks
// (compared with reference images), dialog units, timers and the message
// loop, message boxes under an action script, and scripts on other threads.
//
// Images are compared pixel by pixel: a pixel differs when one of its
// channels is off by more than kChannelTolerance; an image passes when at
// most kPixelTolerance of its pixels differ and the sizes agree. Run with
// OB_QT_UPDATE_REFERENCE=1 to write the reference images instead.
#include "ui/DialogTemplate.h"
#include "ui/headless/HeadlessDesktop.h"
#include "ui/qt/QtDesktop.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QTimer>
#include <QWidget>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <cstdlib>
#include <functional>
#include <thread>

using namespace ob::ui;

namespace {

constexpr int kChannelTolerance = 64;
constexpr double kPixelTolerance = 0.01;
constexpr uint32_t kVisible = WS_VISIBLE | WS_TABSTOP;

QtDesktop* g_desktop = nullptr;

// Any message Qt prints (a warning, a missing font) fails the test that caused it.
void FailOnQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtDebugMsg && type != QtInfoMsg) ADD_FAILURE() << "Qt says: " << text.toStdString();
}

// Makes the desktop once, with a fixed style (the desktop's own) and font.
class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qInstallMessageHandler(FailOnQtMessage);
        if (!std::getenv("XDG_RUNTIME_DIR")) {
            QByteArray dir = QDir::temp().filePath(QStringLiteral("ob-qt-runtime")).toLocal8Bit();
            QDir().mkpath(QString::fromLocal8Bit(dir));
            QFile::setPermissions(QString::fromLocal8Bit(dir), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                                    QFileDevice::ExeOwner);
            ::setenv("XDG_RUNTIME_DIR", dir.constData(), 1);
        }
        g_desktop = new QtDesktop(nullptr);
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    }
    void TearDown() override {
        delete g_desktop;
        g_desktop = nullptr;
    }
};

const auto* const g_environment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

struct Item {
    const char16_t* className;
    uint32_t style;
    uint16_t id;
    int16_t x, y, cx, cy;
    const char16_t* text;
};

std::vector<uint8_t> Template(const CString& caption, int16_t cx, int16_t cy, const std::vector<Item>& items) {
    CDialogTemplate t(caption, 0, 0, cx, cy, false, 0, u"");
    for (const Item& i : items) {
        size_t length = 0;
        auto record = CreateItemTemplate(CString(i.className), i.style, i.id, i.x, i.y, i.cx, i.cy, i.text, length);
        t.AppendItem(record.get(), length);
    }
    t.Finish();
    return t.Bytes();
}

// Runs a dialog: `init` fills it, `shown` runs once it is on screen, then
// the dialog ends with IDOK.
class Sink : public DialogSink {
public:
    std::function<void(WindowHandle)> init, shown;
    WindowHandle window = 0;
    std::vector<uintptr_t> commands;

    void OnCreate(WindowHandle w) override {
        window = w;
        QTimer::singleShot(0, [this] {
            if (shown) shown(window);
            g_desktop->EndDialog(window, IDOK);
        });
    }
    bool OnInitDialog() override {
        if (init) init(window);
        return true;
    }
    bool OnCommand(uintptr_t wParam, intptr_t) override {
        commands.push_back(wParam);
        return true;
    }
    bool OnNotify(uintptr_t, const NotifyHeader*) override { return true; }
    void OnDestroy() override {}
};

intptr_t Send(WindowHandle dialog, int id, unsigned message, uintptr_t wParam, const void* lParam) {
    return g_desktop->SendMessage(g_desktop->GetDlgItem(dialog, id), message, wParam,
                                  reinterpret_cast<intptr_t>(lParam));
}

void AddItems(WindowHandle dialog, int id, unsigned message, std::initializer_list<const char16_t*> items) {
    for (const char16_t* text : items) Send(dialog, id, message, 0, text);
}

// How many pixels differ beyond the channel tolerance.
int DifferentPixels(const QImage& a, const QImage& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            if (std::abs(qRed(p) - qRed(q)) > kChannelTolerance || std::abs(qGreen(p) - qGreen(q)) > kChannelTolerance ||
                std::abs(qBlue(p) - qBlue(q)) > kChannelTolerance)
                ++count;
        }
    return count;
}

void ExpectLooksLike(const QImage& shot, const QString& name) {
    QString path = QStringLiteral(OB_QT_REFERENCE_DIR "/") + name + QStringLiteral(".png");
    if (std::getenv("OB_QT_UPDATE_REFERENCE")) {
        ASSERT_TRUE(shot.save(path)) << path.toStdString();
        return;
    }
    QImage reference(path);
    ASSERT_FALSE(reference.isNull()) << "no reference image " << path.toStdString();
    QImage got = shot.convertToFormat(QImage::Format_RGB32), want = reference.convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(got.size(), want.size()) << name.toStdString();
    int differing = DifferentPixels(got, want);
    EXPECT_LE(differing, kPixelTolerance * got.width() * got.height())
        << name.toStdString() << ": " << differing << " pixels differ";
    if (::testing::Test::HasFailure()) got.save(QStringLiteral(OB_QT_ACTUAL_DIR "/") + name + QStringLiteral(".png"));
}

// One dialog per control kind, filled as a script fills it.
struct Shot {
    const char* name;
    std::vector<Item> items;
    std::function<void(WindowHandle)> init;
};

std::vector<Shot> Shots() {
    SystemTime date{2026, 11, 23, 14, 30, 0};
    return {
        {"pushbutton", {{u"Button", kVisible | BS_DEFPUSHBUTTON, 1, 10, 10, 50, 14, u"OK"}}, nullptr},
        {"checkbox", {{u"Button", kVisible | BS_AUTOCHECKBOX, 10, 10, 10, 80, 12, u"Bold"}},
         [](WindowHandle d) { Send(d, 10, BM_SETCHECK, 1, nullptr); }},
        {"radiobutton",
         {{u"Button", kVisible | BS_AUTORADIOBUTTON | WS_GROUP, 20, 10, 10, 80, 12, u"Small"},
          {u"Button", kVisible | BS_AUTORADIOBUTTON, 21, 10, 24, 80, 12, u"Large"}},
         [](WindowHandle d) { Send(d, 21, BM_SETCHECK, 1, nullptr); }},
        {"groupbox", {{u"Button", WS_VISIBLE | BS_GROUPBOX, 19, 5, 5, 100, 50, u"Size"}}, nullptr},
        {"edit", {{u"Edit", kVisible, 100, 10, 10, 100, 12, u"some text"}}, nullptr},
        {"editmultiline", {{u"Edit", kVisible | ES_MULTILINE, 100, 10, 10, 100, 40, u"one\ntwo"}}, nullptr},
        {"static", {{u"Static", WS_VISIBLE, 50, 10, 10, 100, 12, u"A label"}}, nullptr},
        {"listbox", {{u"ListBox", kVisible, 101, 10, 10, 100, 50, u""}},
         [](WindowHandle d) {
             AddItems(d, 101, LB_ADDSTRING, {u"red", u"green", u"blue"});
             Send(d, 101, LB_SETCURSEL, 1, nullptr);
         }},
        {"combobox", {{u"ComboBox", kVisible | 0x3, 102, 10, 10, 100, 60, u""}},
         [](WindowHandle d) {
             AddItems(d, 102, CB_ADDSTRING, {u"small", u"large"});
             Send(d, 102, CB_SETCURSEL, 0, nullptr);
         }},
        {"datetime", {{u"SysDateTimePick32", kVisible, 103, 10, 10, 100, 14, u""}},
         [date](WindowHandle d) { Send(d, 103, DTM_SETSYSTEMTIME, 0, &date); }},
        {"treeview", {{u"SysTreeView32", kVisible, 104, 10, 10, 100, 60, u""}},
         [](WindowHandle d) {
             TreeInsert top{TVI_ROOT, TVI_LAST, u"Animals"};
             TreeItem parent = Send(d, 104, TVM_INSERTITEMW, 0, &top);
             TreeInsert child{parent, TVI_LAST, u"Cat"};
             Send(d, 104, TVM_INSERTITEMW, 0, &child);
         }},
        {"slider", {{u"msctls_trackbar32", kVisible, 105, 10, 10, 100, 16, u""}},
         [](WindowHandle d) { Send(d, 105, TBM_SETPOS, 1, reinterpret_cast<const void*>(40)); }},
        {"tabcontrol", {{u"SysTabControl32", kVisible, 106, 10, 10, 120, 40, u""}},
         [](WindowHandle d) {
             Send(d, 106, TCM_INSERTITEMW, 0, u"General");
             Send(d, 106, TCM_INSERTITEMW, 1, u"Details");
         }},
        {"dialog_edit_ok",
         {{u"Static", WS_VISIBLE, 50, 7, 9, 40, 10, u"Name:"},
          {u"Edit", kVisible, 100, 45, 7, 100, 12, u"Ada"},
          {u"Button", kVisible | BS_DEFPUSHBUTTON, 1, 95, 28, 50, 14, u"OK"}},
         nullptr},
    };
}

TEST(QtDesktopLooks, EachControlKindMatchesItsReferenceImage) {
    for (const Shot& shot : Shots()) {
        std::vector<uint8_t> bytes = Template(u"Kinds", 160, 80, shot.items);
        Sink sink;
        sink.init = shot.init;
        QImage image;
        sink.shown = [&image](WindowHandle w) { image = g_desktop->WidgetOf(w)->grab().toImage(); };
        ASSERT_EQ(g_desktop->DoModalDialog(bytes.data(), bytes.size(), sink), IDOK) << shot.name;
        ASSERT_FALSE(image.isNull()) << shot.name;
        ExpectLooksLike(image, QString::fromLatin1(shot.name));
    }
}

// Dialog units follow the font: a quarter of the average character width
// across, an eighth of the height down.
TEST(QtDesktopGeometry, DialogUnitsScaleWithTheFont) {
    std::vector<uint8_t> bytes = Template(u"Units", 200, 100, {{u"Button", kVisible, 7, 40, 16, 80, 24, u"x"}});
    Sink sink;
    QRect placed;
    sink.shown = [&placed](WindowHandle w) { placed = g_desktop->WidgetOf(g_desktop->GetDlgItem(w, 7))->geometry(); };
    g_desktop->DoModalDialog(bytes.data(), bytes.size(), sink);
    QFontMetrics metrics(QApplication::font());
    int average =
        (metrics.horizontalAdvance(QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz")) / 26 + 1) / 2;
    EXPECT_EQ(placed.x(), average * 10);
    EXPECT_EQ(placed.width(), average * 20);
    EXPECT_EQ(placed.y(), metrics.height() * 2);
    EXPECT_EQ(placed.height(), metrics.height() * 3);
}

// A refused template makes nothing; a control the widgets keep answers
// its messages, and a message to the dialog itself is 0.
TEST(QtDesktopWindows, RefusedTemplatesAndMessages) {
    std::vector<uint8_t> unknown = Template(u"Odd", 100, 50, {{u"NoSuchClass", kVisible, 5, 0, 0, 10, 10, u""}});
    Sink refused;
    EXPECT_EQ(g_desktop->DoModalDialog(unknown.data(), unknown.size(), refused), -1);
    EXPECT_EQ(refused.window, 0u);
    EXPECT_EQ(g_desktop->DoModalDialog(unknown.data(), 3, refused), -1);

    std::vector<uint8_t> list = Template(u"List", 100, 50, {{u"ListBox", kVisible | LBS_MULTIPLESEL, 5, 0, 0, 90, 40, u""}});
    Sink sink;
    sink.shown = [](WindowHandle d) {
        AddItems(d, 5, LB_ADDSTRING, {u"apple", u"banana", u"cherry"});
        EXPECT_EQ(Send(d, 5, LB_SETCURSEL, 1, nullptr), LB_ERR);   // not for a multi-selection list
        EXPECT_EQ(Send(d, 5, LB_SETSEL, 1, reinterpret_cast<const void*>(-1)), 0);
        EXPECT_EQ(Send(d, 5, LB_GETSEL, 2, nullptr), 1);
        EXPECT_EQ(Send(d, 5, LB_SETSEL, 1, reinterpret_cast<const void*>(7)), LB_ERR);
        CString text;
        EXPECT_EQ(Send(d, 5, LB_GETTEXT, 1, &text), 6);
        EXPECT_EQ(text, u"banana");
        EXPECT_EQ(g_desktop->SendMessage(d, LB_GETCOUNT, 0, 0), 0);
        EXPECT_EQ(g_desktop->GetClassName(d), u"#32770");
    };
    EXPECT_EQ(g_desktop->DoModalDialog(list.data(), list.size(), sink), IDOK);
    EXPECT_EQ(g_desktop->GetDlgItem(sink.window, 5), 0u);   // gone with its dialog
}

struct Ticks {
    std::atomic<int> count{0};
    unsigned id = 0;
    bool killInside = false;
};

void Tick(void* context, unsigned id) {
    auto* ticks = static_cast<Ticks*>(context);
    ++ticks->count;
    if (ticks->killInside) g_desktop->KillTimer(id);
}

// Timers tick from the loop; a timer killed inside its own tick stops; a
// quit from another thread ends the loop early; a quit with no loop
// running ends the next one at once.
TEST(QtDesktopLoop, TimersAndQuit) {
    Ticks once;
    once.killInside = true;
    once.id = g_desktop->SetTimer(10, Tick, &once);
    ASSERT_NE(once.id, 0u);
    EXPECT_FALSE(g_desktop->RunMessageLoop(80));
    EXPECT_EQ(once.count, 1);
    EXPECT_FALSE(g_desktop->KillTimer(once.id));

    Ticks many;
    many.id = g_desktop->SetTimer(10, Tick, &many);
    std::thread quitter([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        g_desktop->QuitMessageLoop();
    });
    EXPECT_TRUE(g_desktop->RunMessageLoop(5000));
    quitter.join();
    EXPECT_GE(many.count, 2);
    EXPECT_TRUE(g_desktop->KillTimer(many.id));

    g_desktop->QuitMessageLoop();
    EXPECT_TRUE(g_desktop->RunMessageLoop(5000));
}

// With an action script loaded, a box other than a question takes its
// default answer and leaves the actions alone.
TEST(QtDesktopBoxes, UnattendedBoxesTakeTheDefault) {
    CString error;
    ASSERT_TRUE(g_desktop->LoadUiActions(u"answer yes\n", u"boxes.actions", error));
    EXPECT_EQ(g_desktop->MessageBox(u"Go on?", MB_OKCANCEL | MB_ICONSTOP), IDOK);
    EXPECT_EQ(g_desktop->MessageBox(u"Done.", MB_OK), IDOK);
    EXPECT_EQ(g_desktop->MessageBox(u"Really?", MB_YESNO), IDYES);
    EXPECT_FALSE(g_desktop->UiActionsFailed());
    ASSERT_TRUE(g_desktop->LoadUiActions(u"", u"none", error));
}

// A script on another thread gets the in-memory windows: its dialog is
// played by the same actions and its handles are not the widgets'.
TEST(QtDesktopThreads, OtherThreadsUseTheInMemoryWindows) {
    CString error;
    ASSERT_TRUE(g_desktop->LoadUiActions(u"type 100 \"hi\"\nok\n", u"thread.actions", error));
    std::vector<uint8_t> bytes = Template(u"Worker", 100, 50, {{u"Edit", kVisible, 100, 0, 0, 50, 12, u""},
                                                               {u"Button", kVisible | BS_DEFPUSHBUTTON, 1, 0, 20, 50, 14, u"OK"}});
    struct Recorder : DialogSink {
        WindowHandle window = 0;
        CString typed;
        void OnCreate(WindowHandle w) override { window = w; }
        bool OnInitDialog() override { return true; }
        bool OnCommand(uintptr_t wParam, intptr_t) override {
            if ((wParam & 0xFFFF) == IDOK) {
                typed = g_desktop->GetWindowText(g_desktop->GetDlgItem(window, 100));
                g_desktop->EndDialog(window, IDOK);
            }
            return true;
        }
        bool OnNotify(uintptr_t, const NotifyHeader*) override { return true; }
        void OnDestroy() override {}
    } sink;
    int result = 0;
    std::thread worker([&] { result = g_desktop->DoModalDialog(bytes.data(), bytes.size(), sink); });
    worker.join();
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(sink.typed, u"hi");
    EXPECT_LT(sink.window, QtDesktop::kFirstHandle);
    EXPECT_FALSE(g_desktop->UiActionsFailed());
    ASSERT_TRUE(g_desktop->LoadUiActions(u"", u"none", error));
}

// What a desktop shows through its console: snapshots, notes and, as the
// runner's console does, the text of each box.
struct Capture : HeadlessDesktop {
    CString out;
    int MessageBox(const CString& text, unsigned style) override {
        out += text + u"\n";
        return HeadlessDesktop::MessageBox(text, style);
    }
    void UiOutput(const CString& text) override { out += text; }
    void UiNote(const CString& line) override { out += u"note: " + line + u"\n"; }
};

CString Num(long n) { return CString::FromUtf8(std::to_string(n)); }

// The same prompts with the same actions: every answer and every line
// shown must agree between the Qt desktop and the headless one.
CString PlayPrompts(Desktop& desktop, const std::string& folder) {
    CString log;
    log += Num(desktop.MessageBox(u"Save changes?", MB_YESNO)) + u"\n";
    log += Num(desktop.MessageBox(u"Again?", MB_YESNO)) + u"\n";
    log += Num(desktop.TrackPopupMenu(10, 20, {u"Cut", u"Copy", u"Paste"})) + u"\n";
    log += Num(desktop.TrackPopupMenu(10, 20, {u"Cut"})) + u"\n";
    FileDialogRequest open;
    open.filter = u"Text|*.txt|All|*.*";
    open.initialFolder = CString::FromUtf8(folder);
    log += desktop.FileDialog(open) + u"\n";
    FileDialogRequest save;
    save.save = true;
    save.fileName = u"draft";
    save.defaultExtension = u"txt";
    save.initialFolder = CString::FromUtf8(folder);
    log += desktop.FileDialog(save) + u"\n";
    log += desktop.FileDialog(open) + u"|\n";
    log += Num(desktop.MessageBox(u"Left over?", MB_YESNO)) + u"\n";
    return log;
}

TEST(QtDesktopPrompts, AnswerLikeTheHeadlessDesktop) {
    std::string folder = (std::filesystem::temp_directory_path() / "ob-qt-prompts").string();
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/notes.txt") << "x";
    CString actions = CString::FromUtf8(
        "expect-dialog \"Save changes?\"\nsnapshot\nanswer no\nanswer yes\n"
        "snapshot\nmenu \"paste\"\nmenu 0\n"
        "file \"notes.txt\"\nsnapshot\nok\n"
        "file \"missing.txt\"\n");
    Capture headless;
    CString error;
    ASSERT_TRUE(headless.LoadUiActions(actions, u"prompts.actions", error));
    CString expected = PlayPrompts(headless, folder) + headless.out;

    Capture console;
    QtDesktop qt(&console);
    ASSERT_TRUE(qt.LoadUiActions(actions, u"prompts.actions", error));
    CString got = PlayPrompts(qt, folder) + console.out;
    EXPECT_EQ(got.ToUtf8(), expected.ToUtf8());
    EXPECT_TRUE(qt.UiActionsFailed());   // "missing.txt" does not exist
    std::filesystem::remove_all(folder);
}

}  // namespace

