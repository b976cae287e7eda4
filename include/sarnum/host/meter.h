/// @file
/// Progress meters. A caller derives from CMeterInfo (two-dimensional transforms) or
/// CCustomMeterInfo (file operations) and overrides what it wants to see.
///
/// Every operation does nothing by default. The library calls a meter on the thread that runs
/// the operation, and only SetRange, SetStep, SetText, SetPos and StepIt. A text is valid
/// during the call only. Exceptions thrown by an override pass through the library, which
/// releases its storage; a raster being written is then incomplete.
///
/// The order of the virtual operations is an interface in itself (applications call through
/// it), so none may be added before or between them, a virtual destructor included: do not
/// delete a meter through a pointer to one of these classes.
#ifndef SARNUM_HOST_METER_H
#define SARNUM_HOST_METER_H

#include "sarnum/host/string.h"

class CWnd;
class CThread;
using HWND = struct HWND__*;  // NOLINT(bugprone-reserved-identifier): the name Windows gives it

/// The operations that both kinds of meters share.
class CMeterInfoBase {
 public:
  virtual void SetCaption(const char* /*caption*/) {}
  virtual void SetText(const char* /*text*/) {}
  virtual void SetPos(int /*pos*/) {}
  virtual void SetRange(int /*lower*/, int /*upper*/) {}
  virtual void GetRange(int* /*lower*/, int* /*upper*/) {}
  virtual void GetPos(int* /*pos*/) {}
  virtual int SetStep(int /*step*/) { return 0; }
  virtual void StepIt() {}
  virtual CString GetCaption() { return {}; }
  virtual CString GetText() { return {}; }
  virtual HWND GetHWND() { return nullptr; }
  virtual CWnd* GetCWND() { return nullptr; }

 protected:
  CMeterInfoBase() = default;
  CMeterInfoBase(const CMeterInfoBase&) = default;
  CMeterInfoBase& operator=(const CMeterInfoBase&) = default;
  ~CMeterInfoBase() = default;
};

/// Meter of the two-dimensional transforms.
class CMeterInfo : public CMeterInfoBase {
 public:
  virtual void DeleteOnClose() {}
  virtual int IsDeleteOnClose() { return 0; }
  virtual int CancelMode() { return 0; }
  virtual void ThreadParent(CThread* /*thread*/) {}
  virtual int Max() { return 0; }
  virtual void ShowCancel(int /*show*/) {}
  virtual void ShowOK(int /*show*/) {}
  virtual void ShowWindow(int /*show*/) {}
  virtual void SendMessageA(unsigned int /*message*/) {}
  virtual void ResShow() {}
  virtual void ShowResButton() {}
};

/// Meter of the file operations.
class CCustomMeterInfo : public CMeterInfoBase {
 public:
  void Stop(int /*reason*/) {}
};

#endif
