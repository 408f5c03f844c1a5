/* The window calls of user32 that the library and the report engine use, under their own names and with their
   own meaning, so that dialog code is written once and compiles unchanged against the real ones.

   With nobody before the screen a dialog is cancelled. One that is to be answered from what it was opened
   with (a report's parameters) says so while it handles WM_INITDIALOG:

       SetPropA(dialog, VARKUI_ANSWER_PROP, (HANDLE)IDOK);

   It is then answered by a click on that button, with all checks of a click, and cancelled if it stays. On
   Windows the property means nothing.

   On Linux they are exports of libvarkui.so, found with dlsym; calls.def lists them, each with its contract.
   Any call takes null, dead or foreign handles and refuses them. Texts are NUL-terminated Windows-1252. */
#ifndef VARKUI_H
#define VARKUI_H

#define VARKUI_ANSWER_PROP "varkAntwort"

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
typedef int16_t SHORT;
typedef uint16_t WORD;
typedef uint16_t WCHAR;
typedef uint16_t ATOM;
typedef uint32_t DWORD;
typedef uint32_t COLORREF;
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
typedef void *LPVOID;
typedef void *HANDLE;
typedef struct HWND__ *HWND;
typedef struct HINSTANCE__ *HINSTANCE;
typedef struct HCURSOR__ *HCURSOR;
typedef struct HICON__ *HICON;
typedef struct HBRUSH__ *HBRUSH;
typedef struct HMENU__ *HMENU;
typedef struct HDC__ *HDC;
typedef HINSTANCE HMODULE;

typedef LRESULT(CALLBACK *WNDPROC)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
typedef INT_PTR(CALLBACK *DLGPROC)(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
typedef BOOL(CALLBACK *WNDENUMPROC)(HWND window, LPARAM lParam);

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

typedef struct tagWNDCLASSA {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
} WNDCLASSA;

typedef struct tagCREATESTRUCTA {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCSTR lpszName;
    LPCSTR lpszClass;
    DWORD dwExStyle;
} CREATESTRUCTA;

/* Where CREATESTRUCTA.lpCreateParams leads to for a window with WS_EX_MDICHILD: lParam is what was handed to
   CreateWindowExA. */
typedef struct tagMDICREATESTRUCTA {
    LPCSTR szClass;
    LPCSTR szTitle;
    HANDLE hOwner;
    int x;
    int y;
    int cx;
    int cy;
    DWORD style;
    LPARAM lParam;
} MDICREATESTRUCTA;

typedef struct tagNMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
} NMHDR;

typedef struct tagWINDOWPOS {
    HWND hwnd;
    HWND hwndInsertAfter;
    int x;
    int y;
    int cx;
    int cy;
    UINT flags;
} WINDOWPOS;

typedef struct tagTCITEMA {
    UINT mask;
    DWORD dwState;
    DWORD dwStateMask;
    LPSTR pszText;
    int cchTextMax;
    int iImage;
    LPARAM lParam;
} TCITEMA;

/* The fixed head of a dialog in memory; menu, class, title, font and controls follow it. */
#pragma pack(push, 2)
typedef struct DLGTEMPLATE {
    DWORD style;
    DWORD dwExtendedStyle;
    WORD cdit;
    SHORT x;
    SHORT y;
    SHORT cx;
    SHORT cy;
} DLGTEMPLATE;
#pragma pack(pop)
typedef const DLGTEMPLATE *LPCDLGTEMPLATEA;

#define LOWORD(value)          ((WORD)((DWORD_PTR)(value)&0xFFFF))
#define HIWORD(value)          ((WORD)(((DWORD_PTR)(value) >> 16) & 0xFFFF))
#define MAKELONG(low, high)    ((LONG)(((DWORD)(WORD)(low)) | (((DWORD)(WORD)(high)) << 16)))
#define MAKEWPARAM(low, high)  ((WPARAM)(DWORD)MAKELONG(low, high))
#define MAKELPARAM(low, high)  ((LPARAM)(DWORD)MAKELONG(low, high))
#define MAKELRESULT(low, high) ((LRESULT)(DWORD)MAKELONG(low, high))
#define MAKEINTRESOURCEA(id)   ((LPSTR)(ULONG_PTR)(WORD)(id))

/* Message boxes */
#define MB_OK                  0x0000
#define MB_OKCANCEL            0x0001
#define MB_ABORTRETRYIGNORE    0x0002
#define MB_YESNOCANCEL         0x0003
#define MB_YESNO               0x0004
#define MB_RETRYCANCEL         0x0005
#define MB_TYPEMASK            0x000F
#define MB_ICONHAND            0x0010
#define MB_ICONQUESTION        0x0020
#define MB_ICONEXCLAMATION     0x0030
#define MB_ICONASTERISK        0x0040
#define MB_ICONMASK            0x00F0
#define MB_ICONERROR           MB_ICONHAND
#define MB_ICONSTOP            MB_ICONHAND
#define MB_ICONWARNING         MB_ICONEXCLAMATION
#define MB_ICONINFORMATION     MB_ICONASTERISK
#define MB_DEFBUTTON1          0x0000
#define MB_DEFBUTTON2          0x0100
#define MB_DEFBUTTON3          0x0200
#define MB_DEFMASK             0x0F00
#define MB_APPLMODAL           0x0000
#define MB_SYSTEMMODAL         0x1000
#define MB_TASKMODAL           0x2000

/* Buttons of dialogs and boxes */
#define IDOK                   1
#define IDCANCEL               2
#define IDABORT                3
#define IDRETRY                4
#define IDIGNORE               5
#define IDYES                  6
#define IDNO                   7

/* GetWindow */
#define GW_HWNDFIRST           0
#define GW_HWNDLAST            1
#define GW_HWNDNEXT            2
#define GW_HWNDPREV            3
#define GW_OWNER               4
#define GW_CHILD               5

/* Window styles */
#define WS_OVERLAPPED          0x00000000u
#define WS_POPUP               0x80000000u
#define WS_CHILD               0x40000000u
#define WS_MINIMIZE            0x20000000u
#define WS_VISIBLE             0x10000000u
#define WS_DISABLED            0x08000000u
#define WS_CLIPSIBLINGS        0x04000000u
#define WS_CLIPCHILDREN        0x02000000u
#define WS_MAXIMIZE            0x01000000u
#define WS_CAPTION             0x00C00000u
#define WS_BORDER              0x00800000u
#define WS_DLGFRAME            0x00400000u
#define WS_VSCROLL             0x00200000u
#define WS_HSCROLL             0x00100000u
#define WS_SYSMENU             0x00080000u
#define WS_THICKFRAME          0x00040000u
#define WS_GROUP               0x00020000u
#define WS_TABSTOP             0x00010000u
#define WS_MINIMIZEBOX         0x00020000u
#define WS_MAXIMIZEBOX         0x00010000u
#define WS_OVERLAPPEDWINDOW    0x00CF0000u

/* Extended window styles */
#define WS_EX_DLGMODALFRAME    0x00000001u
#define WS_EX_NOPARENTNOTIFY   0x00000004u
#define WS_EX_TOPMOST          0x00000008u
#define WS_EX_MDICHILD         0x00000040u
#define WS_EX_TOOLWINDOW       0x00000080u
#define WS_EX_CLIENTEDGE       0x00000200u
#define WS_EX_CONTROLPARENT    0x00010000u

/* Dialog styles */
#define DS_ABSALIGN            0x0001u
#define DS_SYSMODAL            0x0002u
#define DS_3DLOOK              0x0004u
#define DS_SETFONT             0x0040u
#define DS_MODALFRAME          0x0080u
#define DS_CONTROL             0x0400u
#define DS_CENTER              0x0800u

#define CW_USEDEFAULT         ((int)0x80000000)

/* ShowWindow */
#define SW_HIDE               0
#define SW_SHOWNORMAL         1
#define SW_SHOWMINIMIZED      2
#define SW_SHOWMAXIMIZED      3
#define SW_SHOWNOACTIVATE     4
#define SW_SHOW               5
#define SW_MINIMIZE           6
#define SW_SHOWNA             8
#define SW_RESTORE            9

/* SetWindowPos */
#define SWP_NOSIZE            0x0001
#define SWP_NOMOVE            0x0002
#define SWP_NOZORDER          0x0004
#define SWP_NOREDRAW          0x0008
#define SWP_NOACTIVATE        0x0010
#define SWP_FRAMECHANGED      0x0020
#define SWP_SHOWWINDOW        0x0040
#define SWP_HIDEWINDOW        0x0080
#define SWP_NOOWNERZORDER     0x0200
#define HWND_TOP              ((HWND)0)
#define HWND_BOTTOM           ((HWND)1)
#define HWND_TOPMOST          ((HWND)-1)
#define HWND_NOTOPMOST        ((HWND)-2)

/* GetWindowLongPtrA; the places of a dialog follow each other in its extra bytes */
#define GWL_STYLE             (-16)
#define GWL_EXSTYLE           (-20)
#define GWL_ID                (-12)
#define GWLP_WNDPROC          (-4)
#define GWLP_HINSTANCE        (-6)
#define GWLP_HWNDPARENT       (-8)
#define GWLP_ID               (-12)
#define GWLP_USERDATA         (-21)
#define DWLP_MSGRESULT        0
#define DWLP_DLGPROC          (DWLP_MSGRESULT + (int)sizeof(LRESULT))
#define DWLP_USER             (DWLP_DLGPROC + (int)sizeof(DLGPROC))
#define DLGWINDOWEXTRA        48
#define GCL_CBWNDEXTRA        (-18)
#define GCL_STYLE             (-26)
#define GCLP_WNDPROC          (-24)

/* Class styles */
#define CS_DBLCLKS            0x0008
#define CS_PARENTDC           0x0080
#define CS_BYTEALIGNWINDOW    0x2000
#define CS_GLOBALCLASS        0x4000

/* Messages */
#define WM_NULL               0x0000
#define WM_CREATE             0x0001
#define WM_DESTROY            0x0002
#define WM_MOVE               0x0003
#define WM_SIZE               0x0005
#define WM_ACTIVATE           0x0006
#define WM_SETFOCUS           0x0007
#define WM_KILLFOCUS          0x0008
#define WM_ENABLE             0x000A
#define WM_SETREDRAW          0x000B
#define WM_SETTEXT            0x000C
#define WM_GETTEXT            0x000D
#define WM_GETTEXTLENGTH      0x000E
#define WM_PAINT              0x000F
#define WM_CLOSE              0x0010
#define WM_QUIT               0x0012
#define WM_ERASEBKGND         0x0014
#define WM_SHOWWINDOW         0x0018
#define WM_CHILDACTIVATE      0x0022
#define WM_NEXTDLGCTL         0x0028
#define WM_SETFONT            0x0030
#define WM_GETFONT            0x0031
#define WM_WINDOWPOSCHANGED   0x0047
#define WM_NOTIFY             0x004E
#define WM_NCCREATE           0x0081
#define WM_NCDESTROY          0x0082
#define WM_GETDLGCODE         0x0087
#define WM_KEYFIRST           0x0100
#define WM_KEYDOWN            0x0100
#define WM_KEYUP              0x0101
#define WM_CHAR               0x0102
#define WM_SYSKEYDOWN         0x0104
#define WM_SYSKEYUP           0x0105
#define WM_SYSCHAR            0x0106
#define WM_KEYLAST            0x0109
#define WM_INITDIALOG         0x0110
#define WM_COMMAND            0x0111
#define WM_SYSCOMMAND         0x0112
#define WM_TIMER              0x0113
#define WM_HSCROLL            0x0114
#define WM_VSCROLL            0x0115
#define WM_MOUSEFIRST         0x0200
#define WM_LBUTTONDOWN        0x0201
#define WM_LBUTTONUP          0x0202
#define WM_LBUTTONDBLCLK      0x0203
#define WM_PARENTNOTIFY       0x0210
#define WM_USER               0x0400
#define WM_APP                0x8000
#define SC_CLOSE              0xF060
#define WA_INACTIVE           0
#define WA_ACTIVE             1
#define WA_CLICKACTIVE        2
#define SIZE_RESTORED         0
#define PM_NOREMOVE           0
#define PM_REMOVE             1
#define DM_GETDEFID           (WM_USER + 0)
#define DM_SETDEFID           (WM_USER + 1)
#define DC_HASDEFID           0x534B

/* Answers to WM_GETDLGCODE */
#define DLGC_WANTARROWS       0x0001
#define DLGC_WANTTAB          0x0002
#define DLGC_WANTALLKEYS      0x0004
#define DLGC_WANTMESSAGE      0x0004
#define DLGC_HASSETSEL        0x0008
#define DLGC_DEFPUSHBUTTON    0x0010
#define DLGC_UNDEFPUSHBUTTON  0x0020
#define DLGC_RADIOBUTTON      0x0040
#define DLGC_WANTCHARS        0x0080
#define DLGC_STATIC           0x0100
#define DLGC_BUTTON           0x2000

/* Keys */
#define VK_BACK               0x08
#define VK_TAB                0x09
#define VK_RETURN             0x0D
#define VK_SHIFT              0x10
#define VK_CONTROL            0x11
#define VK_MENU               0x12
#define VK_ESCAPE             0x1B
#define VK_SPACE              0x20
#define VK_PRIOR              0x21
#define VK_NEXT               0x22
#define VK_END                0x23
#define VK_HOME               0x24
#define VK_LEFT               0x25
#define VK_UP                 0x26
#define VK_RIGHT              0x27
#define VK_DOWN               0x28
#define VK_INSERT             0x2D
#define VK_DELETE             0x2E
#define VK_F1                 0x70
#define VK_F4                 0x73
#define VK_F12                0x7B

/* Buttons */
#define BS_PUSHBUTTON         0x0000u
#define BS_DEFPUSHBUTTON      0x0001u
#define BS_CHECKBOX           0x0002u
#define BS_AUTOCHECKBOX       0x0003u
#define BS_RADIOBUTTON        0x0004u
#define BS_3STATE             0x0005u
#define BS_AUTO3STATE         0x0006u
#define BS_GROUPBOX           0x0007u
#define BS_AUTORADIOBUTTON    0x0009u
#define BS_TYPEMASK           0x000Fu
#define BS_LEFTTEXT           0x0020u
#define BS_ICON               0x0040u
#define BS_MULTILINE          0x2000u
#define BS_NOTIFY             0x4000u
#define BM_GETCHECK           0x00F0
#define BM_SETCHECK           0x00F1
#define BM_GETSTATE           0x00F2
#define BM_SETSTATE           0x00F3
#define BM_SETSTYLE           0x00F4
#define BM_CLICK              0x00F5
#define BST_UNCHECKED         0
#define BST_CHECKED           1
#define BST_INDETERMINATE     2
#define BST_PUSHED            4
#define BST_FOCUS             8
#define BN_CLICKED            0
#define BN_DOUBLECLICKED      5
#define BN_SETFOCUS           6
#define BN_KILLFOCUS          7

/* Static controls */
#define SS_LEFT               0x0000u
#define SS_CENTER             0x0001u
#define SS_RIGHT              0x0002u
#define SS_ICON               0x0003u
#define SS_LEFTNOWORDWRAP     0x000Cu
#define SS_TYPEMASK           0x001Fu
#define SS_ETCHEDHORZ         0x0010u
#define SS_NOPREFIX           0x0080u
#define SS_NOTIFY             0x0100u

/* Edit controls */
#define ES_LEFT               0x0000u
#define ES_CENTER             0x0001u
#define ES_RIGHT              0x0002u
#define ES_MULTILINE          0x0004u
#define ES_UPPERCASE          0x0008u
#define ES_LOWERCASE          0x0010u
#define ES_PASSWORD           0x0020u
#define ES_AUTOVSCROLL        0x0040u
#define ES_AUTOHSCROLL        0x0080u
#define ES_NOHIDESEL          0x0100u
#define ES_READONLY           0x0800u
#define ES_WANTRETURN         0x1000u
#define ES_NUMBER             0x2000u
#define EM_GETSEL             0x00B0
#define EM_SETSEL             0x00B1
#define EM_GETMODIFY          0x00B8
#define EM_SETMODIFY          0x00B9
#define EM_GETLINECOUNT       0x00BA
#define EM_REPLACESEL         0x00C2
#define EM_LIMITTEXT          0x00C5
#define EM_SETLIMITTEXT       EM_LIMITTEXT
#define EM_CANUNDO            0x00C6
#define EM_SETREADONLY        0x00CF
#define EM_GETLIMITTEXT       0x00D5
#define EN_SETFOCUS           0x0100
#define EN_KILLFOCUS          0x0200
#define EN_CHANGE             0x0300
#define EN_UPDATE             0x0400
#define EN_ERRSPACE           0x0500
#define EN_MAXTEXT            0x0501

/* List boxes */
#define LBS_NOTIFY            0x0001u
#define LBS_SORT              0x0002u
#define LBS_NOREDRAW          0x0004u
#define LBS_USETABSTOPS       0x0080u
#define LBS_NOINTEGRALHEIGHT  0x0100u
#define LBS_WANTKEYBOARDINPUT 0x0400u
#define LBS_DISABLENOSCROLL   0x1000u
#define LB_ADDSTRING          0x0180
#define LB_INSERTSTRING       0x0181
#define LB_DELETESTRING       0x0182
#define LB_RESETCONTENT       0x0184
#define LB_SETCURSEL          0x0186
#define LB_GETSEL             0x0187
#define LB_GETCURSEL          0x0188
#define LB_GETTEXT            0x0189
#define LB_GETTEXTLEN         0x018A
#define LB_GETCOUNT           0x018B
#define LB_SELECTSTRING       0x018C
#define LB_GETTOPINDEX        0x018E
#define LB_FINDSTRING         0x018F
#define LB_SETTABSTOPS        0x0192
#define LB_SETTOPINDEX        0x0197
#define LB_GETITEMDATA        0x0199
#define LB_SETITEMDATA        0x019A
#define LB_SETCARETINDEX      0x019E
#define LB_GETCARETINDEX      0x019F
#define LB_FINDSTRINGEXACT    0x01A2
#define LB_INITSTORAGE        0x01A8
#define LB_OKAY               0
#define LB_ERR                (-1)
#define LB_ERRSPACE           (-2)
#define LBN_ERRSPACE          (-2)
#define LBN_SELCHANGE         1
#define LBN_DBLCLK            2
#define LBN_SELCANCEL         3
#define LBN_SETFOCUS          4
#define LBN_KILLFOCUS         5

/* Combo boxes */
#define CBS_SIMPLE            0x0001u
#define CBS_DROPDOWN          0x0002u
#define CBS_DROPDOWNLIST      0x0003u
#define CBS_TYPEMASK          0x0003u
#define CBS_AUTOHSCROLL       0x0040u
#define CBS_SORT              0x0100u
#define CBS_UPPERCASE         0x2000u
#define CB_GETEDITSEL         0x0140
#define CB_LIMITTEXT          0x0141
#define CB_SETEDITSEL         0x0142
#define CB_ADDSTRING          0x0143
#define CB_DELETESTRING       0x0144
#define CB_GETCOUNT           0x0146
#define CB_GETCURSEL          0x0147
#define CB_GETLBTEXT          0x0148
#define CB_GETLBTEXTLEN       0x0149
#define CB_INSERTSTRING       0x014A
#define CB_RESETCONTENT       0x014B
#define CB_FINDSTRING         0x014C
#define CB_SELECTSTRING       0x014D
#define CB_SETCURSEL          0x014E
#define CB_SHOWDROPDOWN       0x014F
#define CB_GETITEMDATA        0x0150
#define CB_SETITEMDATA        0x0151
#define CB_GETDROPPEDSTATE    0x0157
#define CB_FINDSTRINGEXACT    0x0158
#define CB_INITSTORAGE        0x0161
#define CB_OKAY               0
#define CB_ERR                (-1)
#define CB_ERRSPACE           (-2)
#define CBN_ERRSPACE          (-1)
#define CBN_SELCHANGE         1
#define CBN_DBLCLK            2
#define CBN_SETFOCUS          3
#define CBN_KILLFOCUS         4
#define CBN_EDITCHANGE        5
#define CBN_EDITUPDATE        6
#define CBN_DROPDOWN          7
#define CBN_CLOSEUP           8
#define CBN_SELENDOK          9
#define CBN_SELENDCANCEL      10

/* Tab controls */
#define WC_TABCONTROLA        "SysTabControl32"
#define TCIF_TEXT             0x0001
#define TCIF_PARAM            0x0008
#define TCM_GETITEMCOUNT      0x1304
#define TCM_GETITEMA          0x1305
#define TCM_SETITEMA          0x1306
#define TCM_INSERTITEMA       0x1307
#define TCM_DELETEITEM        0x1308
#define TCM_DELETEALLITEMS    0x1309
#define TCM_GETCURSEL         0x130B
#define TCM_SETCURSEL         0x130C
#define TCM_ADJUSTRECT        0x1328
#define TCM_GETCURFOCUS       0x132F
#define TCM_SETCURFOCUS       0x1330
#define TCN_FIRST             ((UINT)-550)
#define TCN_SELCHANGE         ((UINT)-551)
#define TCN_SELCHANGING       ((UINT)-552)

/* Cursors and colours */
#define IDC_ARROW             MAKEINTRESOURCEA(32512)
#define IDC_IBEAM             MAKEINTRESOURCEA(32513)
#define IDC_WAIT              MAKEINTRESOURCEA(32514)
#define COLOR_BTNFACE         15
#define ETO_OPAQUE            0x0002

/* Pictures, a class of this window system alone. A picture shows a part of something larger, whose owner
   draws that part as it is asked for; a person scrolls, points and drags in it. */
#define VARKUI_PICTURE_CLASS  "VarkPicture"

/* What a picture shows. Places and sizes are in pixels of windows; the picture itself has as many pixels as
   the screen has in its place, so that it is sharp there. */
typedef struct VARKUIPICTURE {
    int Descriptor; /* readable file of Width x Height pixels of 32 bits, 0xAARRGGBB with premultiplied
                       colours, rows without gaps; -1: nothing is drawn */
    LONG Width;
    LONG Height;
    LONG X; /* where its upper left corner lies in the whole */
    LONG Y;
    LONG ContentWidth; /* of the whole */
    LONG ContentHeight;
    LONG Page; /* how far a click beside the thumb of the vertical scroll bar goes */
} VARKUIPICTURE;

/* The part in view: its size in pixels of windows, and how many pixels of the screen one of those has. */
typedef struct VARKUIAREA {
    LONG Width;
    LONG Height;
    LONG Scale;
} VARKUIAREA;

/* lParam: const VARKUIPICTURE *. Shows it; the descriptor stays the caller's. 1, 0 when it cannot be. */
#define PCM_SETPICTURE        (WM_USER + 1)
/* lParam: VARKUIAREA *, filled. 1. */
#define PCM_GETAREA           (WM_USER + 2)
/* lParam: VARKUIPICTURE *, filled with what was set last, without its descriptor. 1. */
#define PCM_GETPICTURE        (WM_USER + 3)

/* WM_NOTIFY of a picture to its parent. */
typedef struct NMPICTURE {
    NMHDR hdr;
    LONG X; /* in pixels of windows: of a point from the upper left corner in view, else as said below */
    LONG Y;
    LONG Count;
} NMPICTURE;

#define PCN_AREA    ((UINT)-1801) /* PCM_GETAREA gives something else now */
#define PCN_SCROLL  ((UINT)-1802) /* the person wants X, Y of the whole in the upper left corner */
#define PCN_PRESS   ((UINT)-1803) /* Count: clicks in a row; negative with Shift */
#define PCN_DRAG    ((UINT)-1804) /* moved with the button down; may lie outside */
#define PCN_RELEASE ((UINT)-1805)
#define PCN_ZOOM    ((UINT)-1806) /* Count: steps to larger, negative to smaller; X, Y: where */

/* A kind of file that a person may save as: what it is called, and the ending of its names with the dot. */
typedef struct VARKUIFILEKIND {
    LPCSTR Name;
    LPCSTR Ending;
} VARKUIFILEKIND;

/* Takes the file that a person has chosen, whose path is as the file system has it. FALSE, after the person
   has been told over `dialog` why, lets them choose again. */
typedef BOOL(CALLBACK *VARKUITAKEFILE)(HWND dialog, LPCSTR path, void *context);

/* Answers a message box (`text` Windows-1252, `style` MB_...) in the place of a person: the id of one of its
   buttons, anything else for the one that does the least. */
typedef int(CALLBACK *VARKUIANSWERBOX)(LPCSTR text, UINT style, void *context);

#ifdef __cplusplus
extern "C" {
#endif

#define VARKUI_CALL(result, name, parameters, arguments) VARKUI_API result name parameters;
#include "window-system/include/calls.def"
#undef VARKUI_CALL

#ifdef __cplusplus
}
#endif

#endif

#endif
