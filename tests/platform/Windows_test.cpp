// The headless window system: dialogs made from templates, messages through message maps,
// what a person does through the C API, modal dialogs handed to the person, and the lives of
// windows and their objects. (Dragging, minimising and restoring a dialog's frame: the View
// Email window in settings/MailViewer.)
#include "platform/Dialogs.h"
#include "platform/Resources.h"
#include "platform/Window.h"
#include "tests/platform/ScriptedUser.h"
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {
// Dialog templates of the tests' own, a module state that serves them, and a dialog class
// that records the messages its map gets.
enum : UINT { kChildTemplate = 500, kPopupTemplate = 501 };
enum : int { kEditId = 10, kGoId = 11, kCheckId = 12 };

const DialogItem kChildItems[] = {
    {kEditId, "EDIT", "", 10, 20, 80, 16, 0x50810080, 0},
    {kGoId, "BUTTON", "Go", 100, 20, 40, 16, 0x50010000, 0},
    {kCheckId, "BUTTON", "Box", 10, 50, 60, 10, 0x50010003, 0},
    {-1, "STATIC", "Label", 10, 5, 40, 8, 0x50020000, 0},
    {IDOK, "BUTTON", "OK", 100, 60, 50, 14, 0x40010001, 0},
};
const DialogItem kPopupItems[] = {
    {kEditId, "EDIT", "", 7, 7, 100, 15, 0x50810880, 0},
};
// A hidden child page, and a visible sizable popup with a caption (as the viewer's).
const DialogTemplate kTestDialogs[] = {
    {kChildTemplate, 0x40000040, 0x00010000, 4, 8, 200, 100, "", "MS Sans Serif", 8, 1, 1,
     kChildItems, static_cast<uint32_t>(std::size(kChildItems))},
    {kPopupTemplate, 0x90CE0244, 0, 0, 0, 200, 120, "Popup", "MS Sans Serif", 8, 0, 0, kPopupItems,
     static_cast<uint32_t>(std::size(kPopupItems))},
};
const ResourceTable kTestResources = {nullptr, 0, kTestDialogs,
                                      static_cast<uint32_t>(std::size(kTestDialogs))};
CModule testModule = {&kTestResources, &testModule, nullptr};

// Makes the test module current, as an entry of a library makes its own module current.
class TestModuleScope {
public:
  TestModuleScope() : guard_(&state_) {}

private:
  AFX_MODULE_STATE state_ = {&testModule, &testModule, nullptr};
  AFX_MAINTAIN_STATE guard_;
};

class RecordingDialog : public CDialog {
public:
  explicit RecordingDialog(UINT templateId = kChildTemplate) : CDialog(templateId) {}
  const MessageMap *GetMessageMap() const override {
    static const MessageMapEntry entries[] = {
        commandEntry<&RecordingDialog::onGo>(kGoId),
        sizeEntry<&RecordingDialog::onSize>(),
        helpEntry<&RecordingDialog::onHelp>(),
    };
    static const MessageMap map = {CDialog::GetMessageMap(), entries, std::size(entries)};
    return &map;
  }
  void DoDataExchange(CDataExchange *dx) override {
    DDX_Control(dx, kEditId, edit);
    if (GetDlgItem(kCheckId) != nullptr)
      DDX_Check(dx, kCheckId, checked);
  }
  BOOL OnInitDialog() override {
    log.push_back("init with " + std::to_string(GetDlgItem(kEditId) != nullptr) + " edit");
    return CDialog::OnInitDialog();
  }
  void OnOK() override {
    log.push_back("ok");
    CDialog::OnOK();
  }
  void OnCancel() override {
    log.push_back("cancel");
    CDialog::OnCancel();
  }
  void onGo() { log.push_back("go"); }
  void onSize(UINT type, int width, int height) {
    log.push_back("size " + std::to_string(type) + " " + std::to_string(width) + "x" +
                  std::to_string(height));
  }
  BOOL onHelp(HELPINFO *info) {
    log.push_back("help " + std::to_string(info->iCtrlId));
    return TRUE;
  }
  CEdit edit;
  int checked = 1;
  std::vector<std::string> log;
};

bool sameRect(const TukRect &rect, int left, int top, int right, int bottom) {
  return rect.left == left && rect.top == top && rect.right == right && rect.bottom == bottom;
}

class WindowsTest : public ::testing::Test {
protected:
  void SetUp() override {
    frame = tukFrameCreate("Host", 400, 300);
    ASSERT_NE(0u, frame);
  }
  void TearDown() override { tukFrameDestroy(frame); }
  // The test dialog as a page of the frame, shown.
  std::unique_ptr<RecordingDialog> openPage() {
    auto page = std::make_unique<RecordingDialog>();
    EXPECT_TRUE(page->Create(kChildTemplate, CWnd::FromHandle(reinterpret_cast<HWND>(frame))));
    tukWindowShow(handle(*page), 1);
    return page;
  }
  static TukWindow handle(const CWnd &window) { return reinterpret_cast<TukWindow>(window.m_hWnd); }
  TestModuleScope module;
  TukWindow frame = 0;
};

TEST_F(WindowsTest, ATemplateMakesAHiddenPageWithItsControlsInPixels) {
  RecordingDialog page;
  ASSERT_TRUE(page.Create(kChildTemplate, CWnd::FromHandle(reinterpret_cast<HWND>(frame))));
  const TukWindowInfo dialog = windowInfo(handle(page));
  EXPECT_STREQ("dialog", dialog.windowClass);
  EXPECT_EQ(frame, dialog.parent);
  EXPECT_EQ(0, dialog.visible); // no template of a page is visible; the host shows it
  EXPECT_EQ(0x40000040u, dialog.style);
  // The frame's client area starts at (4, 22); the template's (4, 8, 200, 100) dialog units
  // are (6, 13, 300, 163) pixels with base units of 6 by 13.
  EXPECT_TRUE(sameRect(dialog.rect, 10, 35, 310, 198));
  const std::vector<TukWindow> controls = childWindows(handle(page));
  ASSERT_EQ(5u, controls.size());
  const TukWindowInfo edit = windowInfo(controls[0]);
  EXPECT_EQ(kEditId, edit.id);
  EXPECT_STREQ("edit", edit.windowClass);
  EXPECT_TRUE(sameRect(edit.rect, 25, 68, 145, 94));
  EXPECT_STREQ("button", windowInfo(controls[1]).windowClass);
  EXPECT_STREQ("checkbox", windowInfo(controls[2]).windowClass);
  EXPECT_EQ(1, windowInfo(controls[2]).checked); // from the member, by the data exchange
  EXPECT_EQ(-1, windowInfo(controls[3]).id);
  EXPECT_EQ("Label", windowText(controls[3]));
  EXPECT_EQ(0u, windowInfo(controls[4]).style & WS_VISIBLE);
  EXPECT_EQ(-1, windowInfo(controls[4]).checked);
  // The first size message comes before the controls and WM_INITDIALOG; then the focus goes
  // to the first control with a tab stop.
  EXPECT_EQ((std::vector<std::string>{"size 0 300x163", "init with 1 edit"}), page.log);
  EXPECT_EQ(controls[0], tukWindowFocused());
  EXPECT_EQ(page.edit.m_hWnd, reinterpret_cast<HWND>(controls[0]));
}

TEST_F(WindowsTest, ClicksAndKeysReachTheMapOnlyOnWindowsAPersonCanReach) {
  std::unique_ptr<RecordingDialog> page = openPage();
  const TukWindow go = tukWindowFindChild(handle(*page), kGoId);
  const TukWindow box = tukWindowFindChild(handle(*page), kCheckId);
  page->log.clear();
  EXPECT_EQ(0, tukWindowClick(go));
  EXPECT_EQ(go, tukWindowFocused());
  EXPECT_EQ(0, tukWindowClick(box)); // an automatic check box toggles
  EXPECT_EQ(0, windowInfo(box).checked);
  EXPECT_EQ(0, tukWindowPressKey(go, TUK_KEY_F1));
  EXPECT_EQ(0, tukWindowPressKey(go, TUK_KEY_ENTER));
  EXPECT_EQ((std::vector<std::string>{"go", "help 11", "ok"}), page->log);
  EXPECT_EQ(0, page->checked); // CDialog's OnOK read the box back, then hid the dialog
  EXPECT_EQ(0, windowInfo(handle(*page)).visible);
  tukWindowShow(handle(*page), 1);
  page->log.clear();
  EXPECT_EQ(-1, tukWindowClick(tukWindowFindChild(handle(*page), IDOK)));    // hidden
  EXPECT_EQ(-1, tukWindowClick(tukWindowFindChild(handle(*page), kEditId))); // no button
  EXPECT_EQ(-1, tukWindowPressKey(go, 99));
  tukWindowShow(handle(*page), 0);
  EXPECT_EQ(-1, tukWindowClick(go));
  EXPECT_EQ(-1, tukWindowPressKey(go, TUK_KEY_ESCAPE));
  EXPECT_TRUE(page->log.empty());
  // Esc in a shown modeless dialog: CDialog's OnCancel hides it.
  tukWindowShow(handle(*page), 1);
  EXPECT_EQ(0, tukWindowPressKey(go, TUK_KEY_ESCAPE));
  EXPECT_EQ((std::vector<std::string>{"cancel"}), page->log);
  EXPECT_EQ(0, windowInfo(handle(*page)).visible);
  // Help without a handler goes up and stops at the top.
  CDialog plain(kChildTemplate);
  ASSERT_TRUE(plain.Create(kChildTemplate, CWnd::FromHandle(reinterpret_cast<HWND>(frame))));
  tukWindowShow(reinterpret_cast<TukWindow>(plain.m_hWnd), 1);
  EXPECT_EQ(
      0, tukWindowPressKey(tukWindowFindChild(reinterpret_cast<TukWindow>(plain.m_hWnd), kEditId),
                           TUK_KEY_F1));
}

TEST_F(WindowsTest, WindowsAndObjectsLetGoOfEachOther) {
  // The host destroys its frame under a page: the page object loses its window, and every
  // call on it then does nothing.
  std::unique_ptr<RecordingDialog> page = openPage();
  const TukWindow pageWindow = handle(*page);
  const TukWindow edit = tukWindowFindChild(pageWindow, kEditId);
  EXPECT_EQ(0, tukFrameDestroy(frame));
  frame = 0;
  EXPECT_EQ(nullptr, page->m_hWnd);
  EXPECT_EQ(nullptr, page->edit.m_hWnd);
  EXPECT_EQ(-1, tukWindowGetInfo(pageWindow, nullptr));
  EXPECT_EQ(-1, tukWindowGetText(edit, nullptr, 0));
  CString text("kept");
  page->edit.GetWindowTextA(text);
  EXPECT_STREQ("kept", text.GetString());
  page->edit.SetWindowTextA("nowhere");
  page->UpdateData(TRUE);
  page.reset();
  // An object that made its window destroys it, children too; a bound control only lets go.
  frame = tukFrameCreate("Host", 400, 300);
  page = openPage();
  const TukWindow secondPage = handle(*page);
  {
    CEdit borrowed;
    ASSERT_TRUE(borrowed.SubclassDlgItem(kGoId, page.get()));
    EXPECT_FALSE(CEdit().SubclassDlgItem(kGoId, page.get())); // taken
  }
  EXPECT_NE(0u, tukWindowFindChild(secondPage, kGoId));
  const TukWindow secondEdit = tukWindowFindChild(secondPage, kEditId);
  page.reset();
  EXPECT_EQ(-1, tukWindowGetInfo(secondPage, nullptr));
  EXPECT_EQ(-1, tukWindowGetText(secondEdit, nullptr, 0));
  EXPECT_TRUE(childWindows(frame).empty());
}
// Modal dialogs and the process-wide user: DoModal hands the dialog to the person, whose
// Enter is OK and Esc Cancel; nobody at all means Cancel and no window.
class ModalTest : public ::testing::Test {
protected:
  TestModuleScope module;
  RecordingDialog dialog{kPopupTemplate};
};

TEST_F(ModalTest, TheUserGetsTheShownDialogAndNobodyMeansCancel) {
  const size_t windowsBefore = childWindows(0).size();
  EXPECT_EQ(IDCANCEL, dialog.DoModal());
  EXPECT_TRUE(dialog.log.empty()); // not even made
  EXPECT_EQ(windowsBefore, childWindows(0).size());
  // With a user, the dialog is shown and its ending is the result.
  ScriptedUser user;
  // The key the user presses (0: none, the dialog left open), the result and the handler.
  const std::tuple<int32_t, INT_PTR, std::string> cases[] = {
      {TUK_KEY_ENTER, IDOK, "ok"}, {TUK_KEY_ESCAPE, IDCANCEL, "cancel"}, {0, IDCANCEL, "cancel"}};
  for (const auto &[key, result, handler] : cases) {
    SCOPED_TRACE(key);
    TukWindow shown = 0;
    user.onModal = [&, key = key](TukWindow window) {
      shown = window;
      const TukWindowInfo info = windowInfo(window);
      EXPECT_EQ(1, info.visible);
      EXPECT_EQ(0u, info.parent);
      EXPECT_EQ("Popup", windowText(window));
      EXPECT_TRUE(key == 0 || tukWindowPressKey(tukWindowFindChild(window, kEditId), key) == 0);
    };
    dialog.log.clear();
    EXPECT_EQ(result, dialog.DoModal());
    EXPECT_EQ(handler, dialog.log.back());
    EXPECT_EQ("Popup", user.last(TUK_USER_MODAL_DIALOG)->text);
    EXPECT_EQ(-1, tukWindowGetInfo(shown, nullptr)); // gone when DoModal returns
    EXPECT_EQ(nullptr, dialog.m_hWnd);
  }
}
} // namespace
