// CEudPropPage, CIMPropPage, CNSPropPage and CPegPropPage: each client page's template, texts,
// program names and help context ids.
#include "settings/ClientPages.h"

#include "resources/resource.h"

namespace {

// clang-format off
// Control id, help context id; two zeros end a table.
const uint32_t eudoraHelp[] = {IDC_EXE_EDIT, 1528, IDC_MAIL_EDIT, 1529, IDC_ATTACH_CHECK, 1530,
                               0, 0};
const uint32_t internetMailHelp[] = {IDC_EXE_EDIT, 203, IDC_MAIL_EDIT, 204, 0, 0};
const uint32_t netscapeHelp[] = {IDC_EXE_EDIT, 205, IDC_MAIL_EDIT, 206, 0, 0};
const uint32_t pegasusHelp[] = {IDC_EXE_EDIT, 207, IDC_MAIL_EDIT, 208, 0, 0};

const PageTraits eudoraPage = {
    IDD_EUD_PAGE,           true,
    {IDS_EUD_EXE, IDS_EUD_EXE_ALT},
    IDS_EUD_NO_EXE_DIR,     IDS_EUD_NO_EXE,
    IDS_EUD_NO_MAIL_DIR,    IDS_EUD_NO_BOTH_DIRS,
    IDS_EUD_NO_MAIL_NO_EXE, IDS_EUD_CAPTION,
    IDS_EUD_PICK_MAIL,      IDS_EUD_PICK_EXE,
    eudoraHelp,
};

const PageTraits internetMailPage = {
    IDD_IM_PAGE,           false,
    {IDS_IM_EXE, 0},
    IDS_IM_NO_EXE_DIR,     IDS_IM_NO_EXE,
    IDS_IM_NO_MAIL_DIR,    IDS_IM_NO_BOTH_DIRS,
    IDS_IM_NO_MAIL_NO_EXE, IDS_IM_CAPTION,
    IDS_IM_PICK_MAIL,      IDS_IM_PICK_EXE,
    internetMailHelp,
};

const PageTraits netscapePage = {
    IDD_NS_PAGE,           false,
    {IDS_NS_EXE, 0},
    IDS_NS_NO_EXE_DIR,     IDS_NS_NO_EXE,
    IDS_NS_NO_MAIL_DIR,    IDS_NS_NO_BOTH_DIRS,
    IDS_NS_NO_MAIL_NO_EXE, IDS_NS_CAPTION,
    IDS_NS_PICK_MAIL,      IDS_NS_PICK_EXE,
    netscapeHelp,
};

const PageTraits pegasusPage = {
    IDD_PEG_PAGE,           false,
    {IDS_PEG_EXE, 0},
    IDS_PEG_NO_EXE_DIR,     IDS_PEG_NO_EXE,
    IDS_PEG_NO_MAIL_DIR,    IDS_PEG_NO_BOTH_DIRS,
    IDS_PEG_NO_MAIL_NO_EXE, IDS_PEG_CAPTION,
    IDS_PEG_PICK_MAIL,      IDS_PEG_PICK_EXE,
    pegasusHelp,
};

// clang-format on

} // namespace

CEudPropPage::CEudPropPage(CWnd *parent) : CClientPropPage(eudoraPage, parent) {}

CIMPropPage::CIMPropPage(CWnd *parent) : CClientPropPage(internetMailPage, parent) {}

CNSPropPage::CNSPropPage(CWnd *parent) : CClientPropPage(netscapePage, parent) {}

CPegPropPage::CPegPropPage(CWnd *parent) : CClientPropPage(pegasusPage, parent) {}
