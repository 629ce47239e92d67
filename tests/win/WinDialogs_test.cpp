// The class library on the system's dialog manager, and the agent's settings pages and View
// Email window in a host's frame, with a person answering from a thread of their own.
#include "cmn/Registry.h"
#include "platform/Dialogs.h"
#include "resources/resource.h"
#include "tests/support/AgentSession.h"
#include "tests/support/ClientStores.h"
#include "tests/support/Reference.h"
#include "tests/support/TestFiles.h"
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <tuple>

namespace {
struct WindowDestroyer {
  void operator()(HWND window) const { DestroyWindow(window); }
};
using Window = std::unique_ptr<HWND__, WindowDestroyer>;

std::string text(HWND dialog, int id) {
  char buffer[256] = {};
  GetDlgItemTextA(dialog, id, buffer, sizeof buffer);
  return buffer;
}

// Waits for a shown dialog of this thread titled `title` (null: any, a message box too), and
// hands it to `answer`. Other test programs show dialogs on the same desktop at once.
class DialogAnswerer {
public:
  DialogAnswerer(const char *title, std::function<void(HWND)> answer)
      : thread_([title, answer, owner = GetCurrentThreadId()] {
          for (int tries = 0; tries < 1000; Sleep(10), ++tries) {
            for (HWND dialog = nullptr; (dialog = FindWindowExA(nullptr, dialog, "#32770", title));)
              if (GetWindowThreadProcessId(dialog, nullptr) == owner && IsWindowVisible(dialog))
                return answer(dialog);
          }
        }) {}
  ~DialogAnswerer() { thread_.join(); }

private:
  std::thread thread_;
};

// The agent's Eudora page, recording what its map gets.
class RecordingPage : public CDialog {
public:
  const MessageMap *GetMessageMap() const override {
    static const MessageMapEntry entries[] = {
        commandEntry<&RecordingPage::onBrowse>(IDC_BROWSE_MAIL),
        sizeEntry<&RecordingPage::onSize>(), helpEntry<&RecordingPage::onHelp>()};
    static const MessageMap map = {CDialog::GetMessageMap(), entries, std::size(entries)};
    return &map;
  }
  void DoDataExchange(CDataExchange *dx) override {
    DDX_Control(dx, IDC_MAIL_EDIT, edit);
    DDX_Check(dx, IDC_ATTACH_CHECK, checked);
  }
  void onBrowse() { log += "browse "; }
  // The edit is bound in WM_INITDIALOG.
  void onSize(UINT, int, int) { log += edit.m_hWnd == nullptr ? "size before init " : "size "; }
  BOOL onHelp(HELPINFO *info) {
    log += "help " + std::to_string(info->iCtrlId) + " ";
    return TRUE;
  }
  CEdit edit;
  int checked = 1;
  std::string log;
};

class WinDialogsTest : public ::testing::Test {
protected:
  // Keys of the program's own: other test programs use the same registry at once.
  void SetUp() override { RegDeleteTreeA(HKEY_CURRENT_USER, agents.c_str()); }
  void TearDown() override { RegDeleteTreeA(HKEY_CURRENT_USER, agents.c_str()); }
  static Window hostFrame() {
    return Window(CreateWindowExA(0, "STATIC", "Host", WS_OVERLAPPEDWINDOW, 0, 0, 640, 480, nullptr,
                                  nullptr, nullptr, nullptr));
  }
  static std::string stored(const std::string &key, const char *name) {
    CString value("<unread>");
    GetRegValue(key.c_str(), name, value);
    return value.GetString();
  }
  // The page of the agent in the frame, with both directories typed in.
  HWND openPage(const AgentSession &session, const std::string &exe) {
    AgentHandle page = 0;
    session.entries().propPageInit(reinterpret_cast<AgentHandle>(frame.get()), 0, &page);
    const HWND window = reinterpret_cast<HWND>(page);
    SetDlgItemTextA(window, IDC_MAIL_EDIT, mailDir.c_str());
    SetDlgItemTextA(window, IDC_EXE_EDIT, exe.c_str());
    return window;
  }
  // The program's own templates; the resource module, kernel32, lacks them.
  AFX_MODULE_STATE state{GetModuleHandleA(nullptr), GetModuleHandleA("kernel32"), nullptr};
  AFX_MAINTAIN_STATE guard{&state};
  Watchdog watchdog{60};
  TempDir dir;
  const std::string agents = "Software\\Tuk\\Test" + std::to_string(GetCurrentProcessId()) + "\\";
  const std::string mailDir = dir.file("Mail");
  Window frame = hostFrame();
};

TEST_F(WinDialogsTest, MessagesReachTheMapAndObjectsAndWindowsLetGoOfEachOther) {
  auto page = std::make_unique<RecordingPage>();
  ASSERT_TRUE(page->Create(IDD_EUD_PAGE, CWnd::FromHandle(frame.get())));
  const HWND window = page->m_hWnd, label = GetDlgItem(window, IDC_MAIL_LABEL);
  EXPECT_EQ("size before init ", page->log);
  EXPECT_EQ(BST_CHECKED, IsDlgButtonChecked(window, IDC_ATTACH_CHECK));
  EXPECT_EQ(page.get(), CWnd::FromHandle(window));
  EXPECT_EQ(&page->edit, CWnd::FromHandle(GetDlgItem(window, IDC_MAIL_EDIT)));
  EXPECT_EQ(label, CWnd::FromHandle(label)->m_hWnd);
  // The bound edit works as an edit, and nobody else may have it.
  page->edit.SetWindowTextA("typed");
  EXPECT_EQ("typed", text(window, IDC_MAIL_EDIT));
  EXPECT_FALSE(CEdit().SubclassDlgItem(IDC_MAIL_EDIT, page.get()));
  const LONG_PTR exeProcedure = GetWindowLongPtrA(GetDlgItem(window, IDC_EXE_EDIT), GWLP_WNDPROC);
  EXPECT_TRUE(CEdit().SubclassDlgItem(IDC_EXE_EDIT, page.get())); // and lets go at once
  EXPECT_EQ(exeProcedure, GetWindowLongPtrA(GetDlgItem(window, IDC_EXE_EDIT), GWLP_WNDPROC));
  // The sender's result, and what the map got: a click, no other notification, help.
  HELPINFO help{sizeof help, HELPINFO_WINDOW, IDC_MAIL_EDIT, nullptr, 0, {}};
  const std::tuple<UINT, WPARAM, LPARAM, LRESULT, std::string> cases[] = {
      {WM_COMMAND, MAKEWPARAM(IDC_BROWSE_MAIL, BN_CLICKED), 0, 0, "browse "},
      {WM_COMMAND, MAKEWPARAM(IDC_MAIL_EDIT, EN_CHANGE), 0, 0, ""},
      {WM_HELP, 0, reinterpret_cast<LPARAM>(&help), TRUE, "help 1000 "}};
  for (const auto &[message, wParam, lParam, result, logged] : cases) {
    page->log.clear();
    EXPECT_EQ(result, SendMessageA(window, message, wParam, lParam));
    EXPECT_EQ(logged, page->log);
  }
  ShowWindow(window, SW_SHOW);
  CheckDlgButton(window, IDC_ATTACH_CHECK, BST_UNCHECKED);
  SendMessageA(window, WM_COMMAND, IDOK, 0);
  EXPECT_EQ(0, page->checked); // OnOK read the box back, then hid the page
  EXPECT_FALSE(IsWindowVisible(window));
  // An object that made its window destroys it; a window that goes lets go of its objects.
  HWND other = nullptr;
  {
    RecordingPage second;
    ASSERT_TRUE(second.Create(IDD_EUD_PAGE, CWnd::FromHandle(frame.get())));
    other = second.m_hWnd;
  }
  EXPECT_FALSE(IsWindow(other));
  frame.reset();
  EXPECT_EQ(nullptr, page->m_hWnd);
  EXPECT_EQ(nullptr, page->edit.m_hWnd);
}

TEST_F(WinDialogsTest, EachClientsPageAsksAboutWhatIsMissingAndStoresWithCommitOneOnly) {
  SetRegValue((agents + "File").c_str(), "Attachments", 1);
  const std::string exeDir = dir.file("Programs");
  makeDirs(mailDir);
  for (const auto &[client, program] : {std::pair{"MHEudora", "eudora.exe"},
                                        {"MHInternet", "explorer.exe"},
                                        {"MHNetscape", "netscape.exe"},
                                        {"MHPegasus", "winpm-32.exe"}}) {
    writeFile(exeDir + "/" + program, "MZ");
    const std::string key = agents + client;
    const AgentSession session(key);
    const HWND page = openPage(session, dir.file("nowhere"));
    EXPECT_EQ(frame.get(), GetParent(page));
    // The person's answer to the missing program, and the check step's result.
    for (const auto &[button, result] : {std::pair{IDRETRY, 0}, {IDCANCEL, 1}}) {
      const DialogAnswerer person(nullptr, [button = button](HWND box) {
        PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
      });
      EXPECT_EQ(result, session.entries().Validate(0));
    }
    SetDlgItemTextA(page, IDC_EXE_EDIT, exeDir.c_str());
    EXPECT_EQ(1, session.entries().Validate(0)); // all there: nothing to ask
    EXPECT_EQ(1, session.entries().Validate(2));
    EXPECT_EQ("<unread>", stored(key, "MailPath"));
    EXPECT_EQ(1, session.entries().Validate(1));
    EXPECT_EQ(mailDir + "|" + exeDir, stored(key, "MailPath") + "|" + stored(key, "ExePath"));
    EXPECT_EQ(0, session.entries().propPageClose());
    EXPECT_FALSE(IsWindow(page));
  }
  // Eudora's box showed the stored flag; the store wrote what it showed at the check step.
  int32_t attach = -1;
  EXPECT_TRUE(GetRegValue((agents + "File").c_str(), "Attachments", &attach) && attach == 1);
  EXPECT_EQ(mailDir + "\\Attach", stored(agents + "File", "EudAttachPath"));
}

TEST_F(WinDialogsTest, RunObjectShowsTheMessageAndTheBodyGrowsWithTheWindow) {
  const AgentSession session(agents + "MHEudora");
  const std::string message = "x\r\nFrom: bob@example.org\r\nSubject: Hello\r\n\r\nBody\r\n";
  const Mailbox box = framed("eudora", {message, "next"});
  writeFile(mailDir + "/In.mbx", box.bytes);
  RecordBuffer record(mailDir + "/In.mbx", box.ranges[0].offset, box.ranges[0].length,
                      referenceChecksum(message));
  // The person reads the texts, widens and heightens the window, and is done.
  const DialogAnswerer person("View Email", [](HWND dialog) {
    EXPECT_EQ("Hello|bob@example.org",
              text(dialog, IDC_VIEW_SUBJECT) + "|" + text(dialog, IDC_VIEW_FROM));
    RECT body{}, grown{}, window{};
    GetWindowRect(GetDlgItem(dialog, IDC_VIEW_BODY), &body);
    GetWindowRect(dialog, &window);
    SetWindowPos(dialog, nullptr, 0, 0, window.right - window.left + 40,
                 window.bottom - window.top + 30, SWP_NOMOVE | SWP_NOZORDER);
    GetWindowRect(GetDlgItem(dialog, IDC_VIEW_BODY), &grown);
    EXPECT_EQ(40, grown.right - body.right);
    EXPECT_EQ(30, grown.bottom - body.bottom);
    PostMessageA(dialog, WM_COMMAND, IDC_DONE, 0);
  });
  EXPECT_EQ(0, session.entries().RunObject(record.get()));
}
} // namespace
