// Dialog templates of the tests' own, a module state that serves them, and a dialog class
// that records the messages its map gets.
#pragma once

#include "platform/Dialogs.h"
#include "platform/Resources.h"

#include <iterator>
#include <string>
#include <vector>

enum : UINT { kChildTemplate = 500, kPopupTemplate = 501 };
enum : int { kEditId = 10, kGoId = 11, kCheckId = 12 };

inline const DialogItem kChildItems[] = {
    {kEditId, "EDIT", "", 10, 20, 80, 16, 0x50810080, 0},
    {kGoId, "BUTTON", "Go", 100, 20, 40, 16, 0x50010000, 0},
    {kCheckId, "BUTTON", "Box", 10, 50, 60, 10, 0x50010003, 0},
    {-1, "STATIC", "Label", 10, 5, 40, 8, 0x50020000, 0},
    {IDOK, "BUTTON", "OK", 100, 60, 50, 14, 0x40010001, 0},
};
inline const DialogItem kPopupItems[] = {
    {kEditId, "EDIT", "", 7, 7, 100, 15, 0x50810880, 0},
};
// A hidden child page, and a visible sizable popup with a caption (as the viewer's).
inline const DialogTemplate kTestDialogs[] = {
    {kChildTemplate, 0x40000040, 0x00010000, 4, 8, 200, 100, "", "MS Sans Serif", 8, 1, 1,
     kChildItems, static_cast<uint32_t>(std::size(kChildItems))},
    {kPopupTemplate, 0x90CE0244, 0, 0, 0, 200, 120, "Popup", "MS Sans Serif", 8, 0, 0, kPopupItems,
     static_cast<uint32_t>(std::size(kPopupItems))},
};
inline const ResourceTable kTestResources = {nullptr, 0, kTestDialogs,
                                             static_cast<uint32_t>(std::size(kTestDialogs))};
inline CModule testModule = {&kTestResources, &testModule, nullptr};

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
