/* The window calls of user32 that the library and the report engine use, under their own names and with their
   own meaning, so that dialog code is written once and compiles unchanged against the real ones.

   On Linux they are exports of libvarkui.so, found with dlsym; calls.def lists them, each with its contract.
   Any call takes null, dead or foreign handles and refuses them. Texts are NUL-terminated Windows-1252. */
#ifndef VARKUI_H
#define VARKUI_H

#ifdef _WIN32

#include <windows.h>

#include <commctrl.h>

#else

#include <stddef.h>
#include <stdint.h>

/* Where the calls are declared for the window system itself, they are its exports. A library that forwards
   them keeps its forwarders to itself, as everything else it does not export. */
#ifdef VARKUI_BUILD
#define VARKUI_API __attribute__((visibility("default")))
#else
#define VARKUI_API
#endif

#define CALLBACK
#define WINAPI
#define TRUE  1
#define FALSE 0

typedef int BOOL;
typedef unsigned char BYTE;
typedef uint16_t WORD;
typedef uint16_t ATOM;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef unsigned int UINT;
typedef intptr_t INT_PTR;
typedef uintptr_t UINT_PTR;
typedef intptr_t LONG_PTR;
typedef uintptr_t ULONG_PTR;
typedef uintptr_t DWORD_PTR;
typedef uintptr_t WPARAM;
typedef intptr_t LPARAM;
typedef intptr_t LRESULT;
typedef const char *LPCSTR;
typedef char *LPSTR;
typedef void *HANDLE;
typedef struct HWND__ *HWND;
typedef struct HINSTANCE__ *HINSTANCE;
typedef struct HCURSOR__ *HCURSOR;
typedef HINSTANCE HMODULE;

typedef struct tagPOINT {
    LONG x;
    LONG y;
} POINT;

typedef struct tagRECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
} RECT;

typedef struct tagMSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
} MSG;

#define LOWORD(value)         ((WORD)((DWORD_PTR)(value)&0xFFFF))
#define HIWORD(value)         ((WORD)(((DWORD_PTR)(value) >> 16) & 0xFFFF))
#define MAKELONG(low, high)   ((LONG)(((DWORD)(WORD)(low)) | (((DWORD)(WORD)(high)) << 16)))
#define MAKEWPARAM(low, high) ((WPARAM)(DWORD)MAKELONG(low, high))
#define MAKELPARAM(low, high) ((LPARAM)(DWORD)MAKELONG(low, high))
#define MAKEINTRESOURCEA(id)  ((LPSTR)(ULONG_PTR)(WORD)(id))

/* Message boxes */
#define MB_OK                 0x0000
#define MB_OKCANCEL           0x0001
#define MB_ABORTRETRYIGNORE   0x0002
#define MB_YESNOCANCEL        0x0003
#define MB_YESNO              0x0004
#define MB_RETRYCANCEL        0x0005
#define MB_TYPEMASK           0x000F
#define MB_ICONHAND           0x0010
#define MB_ICONQUESTION       0x0020
#define MB_ICONEXCLAMATION    0x0030
#define MB_ICONASTERISK       0x0040
#define MB_ICONMASK           0x00F0
#define MB_ICONERROR          MB_ICONHAND
#define MB_ICONSTOP           MB_ICONHAND
#define MB_ICONWARNING        MB_ICONEXCLAMATION
#define MB_ICONINFORMATION    MB_ICONASTERISK
#define MB_DEFBUTTON1         0x0000
#define MB_DEFBUTTON2         0x0100
#define MB_DEFBUTTON3         0x0200
#define MB_DEFMASK            0x0F00
#define MB_APPLMODAL          0x0000
#define MB_SYSTEMMODAL        0x1000
#define MB_TASKMODAL          0x2000

#define IDOK                 1
#define IDCANCEL             2
#define IDABORT              3
#define IDRETRY              4
#define IDIGNORE             5
#define IDYES                6
#define IDNO                 7

/* GetWindow */
#define GW_HWNDFIRST         0
#define GW_HWNDLAST          1
#define GW_HWNDNEXT          2
#define GW_HWNDPREV          3
#define GW_OWNER             4
#define GW_CHILD             5

/* Messages */
#define WM_NULL              0x0000
#define WM_GETDLGCODE        0x0087
#define WM_COMMAND           0x0111
#define WM_USER              0x0400

/* Answers to WM_GETDLGCODE */
#define DLGC_WANTARROWS      0x0001
#define DLGC_WANTTAB         0x0002
#define DLGC_WANTALLKEYS     0x0004
#define DLGC_HASSETSEL       0x0008
#define DLGC_DEFPUSHBUTTON   0x0010
#define DLGC_UNDEFPUSHBUTTON 0x0020
#define DLGC_RADIOBUTTON     0x0040
#define DLGC_WANTCHARS       0x0080
#define DLGC_STATIC          0x0100
#define DLGC_BUTTON          0x2000

/* Edit controls */
#define EM_GETSEL            0x00B0
#define EM_SETSEL            0x00B1

/* Cursors */
#define IDC_ARROW            MAKEINTRESOURCEA(32512)
#define IDC_IBEAM            MAKEINTRESOURCEA(32513)
#define IDC_WAIT             MAKEINTRESOURCEA(32514)

#ifdef __cplusplus
extern "C" {
#endif

#define VARKUI_CALL(result, name, parameters, arguments) VARKUI_API result name parameters;
#include "window-system/calls.def"
#undef VARKUI_CALL

#ifdef __cplusplus
}
#endif

#endif

#endif
