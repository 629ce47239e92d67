// Resource ids of the agent's string table and dialog templates. Language modules use the
// same ids.
#pragma once

// Header names searched in a message, each with its leading line feed.
#define IDS_HDR_SUBJECT 1
#define IDS_HDR_DATE 2
#define IDS_HDR_TO 3
#define IDS_HDR_FROM 4
#define IDS_HDR_CC 5
// Month names, January to December.
#define IDS_MONTH_FIRST 6
#define IDS_MONTH_LAST 17
// Property names.
#define IDS_PROP_TO 18
#define IDS_PROP_FROM 19
#define IDS_PROP_CC 20
#define IDS_PROP_SUBJECT 21
#define IDS_PROP_TITLE 22
#define IDS_PROP_LOCATION 23
#define IDS_PROP_AUTHOR 24
// Client display names.
#define IDS_EUDORA_NAME 25
#define IDS_NETSCAPE_NAME 38
#define IDS_INTERNET_NAME 41
#define IDS_PEGASUS_NAME 43
// Eudora's attachment directory lookup.
#define IDS_EUD_ATTACH_SUFFIX 26
#define IDS_EUD_INI_SUFFIX 27
#define IDS_EUD_INI_SECTION 28
#define IDS_EUD_INI_KEY 29
// Eudora settings page.
#define IDS_EUD_NO_MAIL_DIR 30
#define IDS_EUD_NO_EXE_DIR 31
#define IDS_EUD_PICK_MAIL 32
#define IDS_EUD_PICK_EXE 33
#define IDS_EUD_NO_EXE 34
#define IDS_EUD_CAPTION 35
#define IDS_EUD_EXE 36
#define IDS_EUD_EXE_ALT 37
#define IDS_EUD_NO_BOTH_DIRS 69
#define IDS_EUD_NO_MAIL_NO_EXE 70
// Netscape settings page.
#define IDS_NS_EXE 39
#define IDS_NS_NO_MAIL_DIR 50
#define IDS_NS_NO_EXE_DIR 51
#define IDS_NS_PICK_MAIL 52
#define IDS_NS_PICK_EXE 53
#define IDS_NS_NO_EXE 54
#define IDS_NS_CAPTION 55
#define IDS_NS_NO_BOTH_DIRS 63
#define IDS_NS_NO_MAIL_NO_EXE 64
// Internet Mail settings page.
#define IDS_IM_EXE 40
#define IDS_IM_NO_MAIL_DIR 44
#define IDS_IM_NO_EXE_DIR 45
#define IDS_IM_PICK_MAIL 46
#define IDS_IM_PICK_EXE 47
#define IDS_IM_NO_EXE 48
#define IDS_IM_CAPTION 49
#define IDS_IM_NO_BOTH_DIRS 67
#define IDS_IM_NO_MAIL_NO_EXE 68
// Pegasus settings page.
#define IDS_PEG_EXE 42
#define IDS_PEG_NO_MAIL_DIR 56
#define IDS_PEG_NO_EXE_DIR 57
#define IDS_PEG_PICK_MAIL 58
#define IDS_PEG_PICK_EXE 59
#define IDS_PEG_NO_EXE 60
#define IDS_PEG_CAPTION 61
#define IDS_PEG_NO_BOTH_DIRS 65
#define IDS_PEG_NO_MAIL_NO_EXE 66
// The viewer's "reindex" message.
#define IDS_MESSAGE_GONE 62

// Dialog templates.
#define IDD_PROP_PAGE 129
#define IDD_EUD_PAGE 130
#define IDD_NS_PAGE 131
#define IDD_VIEW_EMAIL 133
#define IDD_IM_PAGE 134
#define IDD_PEG_PAGE 135

// Controls.
#define IDC_MAIL_EDIT 1000
#define IDC_BROWSE_MAIL 1001
#define IDC_MAIL_LABEL 1002
#define IDC_EXE_EDIT 1003
#define IDC_BROWSE_EXE 1004
#define IDC_EXE_LABEL 1005
#define IDC_ATTACH_CHECK 1007
#define IDC_DONE 1008
#define IDC_VIEW_TO 1009
#define IDC_VIEW_CC 1010
#define IDC_VIEW_FROM 1011
#define IDC_VIEW_DATE 1012
#define IDC_VIEW_LOCATION 1013
#define IDC_VIEW_SUBJECT 1014
#define IDC_VIEW_BODY 1015
