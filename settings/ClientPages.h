// CEudPropPage, CIMPropPage, CNSPropPage and CPegPropPage: the settings pages of the four
// clients, the same page with each client's numbers.
#pragma once

#include "settings/ClientPropPage.h"

class CEudPropPage : public CClientPropPage {
public:
  explicit CEudPropPage(CWnd *parent);
};

class CIMPropPage : public CClientPropPage {
public:
  explicit CIMPropPage(CWnd *parent);
};

class CNSPropPage : public CClientPropPage {
public:
  explicit CNSPropPage(CWnd *parent);
};

class CPegPropPage : public CClientPropPage {
public:
  explicit CPegPropPage(CWnd *parent);
};
