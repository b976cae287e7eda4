/// @file
/// Progress meters. A caller derives from CMeterInfo (two-dimensional transforms) or
/// CCustomMeterInfo (file operations) and overrides what it wants to see.
///
/// Every operation does nothing by default. The library calls a meter on the thread that runs
/// the operation, and only SetRange, SetStep, SetText, SetPos and StepIt. A text is valid
/// during the call only. Exceptions thrown by an override pass through the library, which
/// releases its storage and destroys its raster layers, without closing them.
///
/// The order of the virtual operations is an interface in itself (applications call through
/// it), so none may be added before or between them, a virtual destructor included: do not
/// delete a meter through a pointer to one of these classes.
#ifndef SARNUM_HOST_METER_H
#define SARNUM_HOST_METER_H

#include "sarnum/host/string.h"

class CWnd;
class CThread;
/// A window, where there are any.
using HWND = struct HWND__*;  // NOLINT(bugprone-reserved-identifier): the name Windows gives it

/// The operations that both kinds of meters share.
class CMeterInfoBase {
 public:
  /// What the work is called. The library never calls it.
  virtual void SetCaption(const char* /*caption*/) {}
  /// What is being done now.
  virtual void SetText(const char* /*text*/) {}
  /// How far it has come, between the bounds of SetRange.
  virtual void SetPos(int /*pos*/) {}
  /// The positions of nothing done and of all done.
  virtual void SetRange(int /*lower*/, int /*upper*/) {}
  /// For the caller's own use; the library asks for nothing.
  /// @{
  virtual void GetRange(int* /*lower*/, int* /*upper*/) {}
  virtual void GetPos(int* /*pos*/) {}
  /// @}
  /// How far one StepIt() goes.
  virtual int SetStep(int /*step*/) { return 0; }
  /// One step more is done.
  virtual void StepIt() {}
  /// For the caller's own use; the library asks for nothing.
  /// @{
  virtual CString GetCaption() { return {}; }
  virtual CString GetText() { return {}; }
  virtual HWND GetHWND() { return nullptr; }
  virtual CWnd* GetCWND() { return nullptr; }
  /// @}

 protected:
  CMeterInfoBase() = default;
  /// Only as parts of the classes below.
  /// @{
  CMeterInfoBase(const CMeterInfoBase&) = default;
  CMeterInfoBase& operator=(const CMeterInfoBase&) = default;
  /// @}
  ~CMeterInfoBase() = default;
};

/// Meter of the two-dimensional transforms.
class CMeterInfo : public CMeterInfoBase {
 public:
  /// For the host and its windows; the library calls none of them.
  /// @{
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
  /// @}
};

/// Meter of the file operations.
class CCustomMeterInfo : public CMeterInfoBase {
 public:
  /// Does nothing; the library does not call it.
  void Stop(int /*reason*/) {}
};

#endif
