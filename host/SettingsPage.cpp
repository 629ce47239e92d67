// Driving the settings page through the window system's host calls.
#include "host/SettingsPage.h"

#include "host/TerminalUser.h"

namespace {
// The controls every client page has, and Eudora's check box.
constexpr int32_t kMailEditId = 1000;
constexpr int32_t kProgramEditId = 1003;
constexpr int32_t kAttachmentsBoxId = 1007;
// Room for the largest page template.
constexpr int32_t kFrameWidth = 480;
constexpr int32_t kFrameHeight = 300;
} // namespace

SettingsPage::SettingsPage(const AgentEntryTable &entries, const std::string &title)
    : entries_(entries) {
  frame_ = tukFrameCreate(title.c_str(), kFrameWidth, kFrameHeight);
  if (frame_ == 0)
    return;
  AgentHandle page = 0;
  entries_.propPageInit(frame_, 0, &page);
  page_ = page;
  if (page_ != 0)
    tukWindowShow(page_, 1); // a host places the page in view
}

SettingsPage::~SettingsPage() {
  if (page_ != 0)
    entries_.propPageClose();
  if (frame_ != 0)
    tukFrameDestroy(frame_);
}

TukWindow SettingsPage::control(int32_t id) const {
  return page_ != 0 ? tukWindowFindChild(page_, id) : 0;
}

std::string SettingsPage::mailDirectory() const {
  return windowText(control(kMailEditId));
}

std::string SettingsPage::programDirectory() const {
  return windowText(control(kProgramEditId));
}

bool SettingsPage::setMailDirectory(const std::string &directory) {
  return tukWindowSetText(control(kMailEditId), directory.c_str()) == 0;
}

bool SettingsPage::setProgramDirectory(const std::string &directory) {
  return tukWindowSetText(control(kProgramEditId), directory.c_str()) == 0;
}

bool SettingsPage::setAttachments(bool on) {
  return tukWindowSetCheck(control(kAttachmentsBoxId), on ? 1 : 0) == 0;
}

bool SettingsPage::check() {
  return entries_.Validate(0) != 0;
}

void SettingsPage::store() {
  entries_.Validate(1);
}
