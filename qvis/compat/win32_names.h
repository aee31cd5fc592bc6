// Win32 macro names (raster codes, pen and brush styles, message, key and mode numbers) for our
// own .cc files and for hosts that want them. Each is defined only when <windows.h> has not
// defined it already, with the same value, so the two headers can be mixed in any order.
// Public headers never include this file.
#ifndef QVIS_COMPAT_WIN32_NAMES_H_
#define QVIS_COMPAT_WIN32_NAMES_H_

#include "qvis/compat/types.h"

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif
#ifndef R2_BLACK
#define R2_BLACK 1
#endif
#ifndef R2_NOTMERGEPEN
#define R2_NOTMERGEPEN 2
#endif
#ifndef R2_MASKNOTPEN
#define R2_MASKNOTPEN 3
#endif
#ifndef R2_NOTCOPYPEN
#define R2_NOTCOPYPEN 4
#endif
#ifndef R2_MASKPENNOT
#define R2_MASKPENNOT 5
#endif
#ifndef R2_NOT
#define R2_NOT 6
#endif
#ifndef R2_XORPEN
#define R2_XORPEN 7
#endif
#ifndef R2_NOTMASKPEN
#define R2_NOTMASKPEN 8
#endif
#ifndef R2_MASKPEN
#define R2_MASKPEN 9
#endif
#ifndef R2_NOTXORPEN
#define R2_NOTXORPEN 10
#endif
#ifndef R2_NOP
#define R2_NOP 11
#endif
#ifndef R2_MERGENOTPEN
#define R2_MERGENOTPEN 12
#endif
#ifndef R2_COPYPEN
#define R2_COPYPEN 13
#endif
#ifndef R2_MERGEPENNOT
#define R2_MERGEPENNOT 14
#endif
#ifndef R2_MERGEPEN
#define R2_MERGEPEN 15
#endif
#ifndef R2_WHITE
#define R2_WHITE 16
#endif
#ifndef PS_SOLID
#define PS_SOLID 0
#endif
#ifndef PS_DASH
#define PS_DASH 1
#endif
#ifndef PS_DOT
#define PS_DOT 2
#endif
#ifndef PS_DASHDOT
#define PS_DASHDOT 3
#endif
#ifndef PS_DASHDOTDOT
#define PS_DASHDOTDOT 4
#endif
#ifndef PS_NULL
#define PS_NULL 5
#endif
#ifndef PS_INSIDEFRAME
#define PS_INSIDEFRAME 6
#endif
#ifndef PS_USERSTYLE
#define PS_USERSTYLE 7
#endif
#ifndef PS_ALTERNATE
#define PS_ALTERNATE 8
#endif
#ifndef PS_STYLE_MASK
#define PS_STYLE_MASK 0x0000000F
#endif
#ifndef PS_ENDCAP_ROUND
#define PS_ENDCAP_ROUND 0x00000000
#endif
#ifndef PS_ENDCAP_SQUARE
#define PS_ENDCAP_SQUARE 0x00000100
#endif
#ifndef PS_ENDCAP_FLAT
#define PS_ENDCAP_FLAT 0x00000200
#endif
#ifndef PS_ENDCAP_MASK
#define PS_ENDCAP_MASK 0x00000F00
#endif
#ifndef PS_JOIN_ROUND
#define PS_JOIN_ROUND 0x00000000
#endif
#ifndef PS_JOIN_BEVEL
#define PS_JOIN_BEVEL 0x00001000
#endif
#ifndef PS_JOIN_MITER
#define PS_JOIN_MITER 0x00002000
#endif
#ifndef PS_JOIN_MASK
#define PS_JOIN_MASK 0x0000F000
#endif
#ifndef PS_COSMETIC
#define PS_COSMETIC 0x00000000
#endif
#ifndef PS_GEOMETRIC
#define PS_GEOMETRIC 0x00010000
#endif
#ifndef PS_TYPE_MASK
#define PS_TYPE_MASK 0x000F0000
#endif
#ifndef BS_SOLID
#define BS_SOLID 0
#endif
#ifndef BS_NULL
#define BS_NULL 1
#endif
#ifndef BS_HOLLOW
#define BS_HOLLOW 1
#endif
#ifndef BS_HATCHED
#define BS_HATCHED 2
#endif
#ifndef BS_PATTERN
#define BS_PATTERN 3
#endif
#ifndef HS_HORIZONTAL
#define HS_HORIZONTAL 0
#endif
#ifndef HS_VERTICAL
#define HS_VERTICAL 1
#endif
#ifndef HS_FDIAGONAL
#define HS_FDIAGONAL 2
#endif
#ifndef HS_BDIAGONAL
#define HS_BDIAGONAL 3
#endif
#ifndef HS_CROSS
#define HS_CROSS 4
#endif
#ifndef HS_DIAGCROSS
#define HS_DIAGCROSS 5
#endif
#ifndef WHITE_BRUSH
#define WHITE_BRUSH 0
#endif
#ifndef LTGRAY_BRUSH
#define LTGRAY_BRUSH 1
#endif
#ifndef GRAY_BRUSH
#define GRAY_BRUSH 2
#endif
#ifndef DKGRAY_BRUSH
#define DKGRAY_BRUSH 3
#endif
#ifndef BLACK_BRUSH
#define BLACK_BRUSH 4
#endif
#ifndef NULL_BRUSH
#define NULL_BRUSH 5
#endif
#ifndef HOLLOW_BRUSH
#define HOLLOW_BRUSH 5
#endif
#ifndef WHITE_PEN
#define WHITE_PEN 6
#endif
#ifndef BLACK_PEN
#define BLACK_PEN 7
#endif
#ifndef NULL_PEN
#define NULL_PEN 8
#endif
#ifndef SYSTEM_FONT
#define SYSTEM_FONT 13
#endif
#ifndef DEFAULT_GUI_FONT
#define DEFAULT_GUI_FONT 17
#endif
#ifndef TRANSPARENT
#define TRANSPARENT 1
#endif
#ifndef OPAQUE
#define OPAQUE 2
#endif
#ifndef ALTERNATE
#define ALTERNATE 1
#endif
#ifndef WINDING
#define WINDING 2
#endif
#ifndef AD_COUNTERCLOCKWISE
#define AD_COUNTERCLOCKWISE 1
#endif
#ifndef AD_CLOCKWISE
#define AD_CLOCKWISE 2
#endif
#ifndef RGN_AND
#define RGN_AND 1
#endif
#ifndef RGN_OR
#define RGN_OR 2
#endif
#ifndef RGN_XOR
#define RGN_XOR 3
#endif
#ifndef RGN_DIFF
#define RGN_DIFF 4
#endif
#ifndef RGN_COPY
#define RGN_COPY 5
#endif
#ifndef ERROR
#define ERROR 0
#endif
#ifndef NULLREGION
#define NULLREGION 1
#endif
#ifndef SIMPLEREGION
#define SIMPLEREGION 2
#endif
#ifndef COMPLEXREGION
#define COMPLEXREGION 3
#endif
#ifndef SRCCOPY
#define SRCCOPY 0x00CC0020
#endif
#ifndef SRCPAINT
#define SRCPAINT 0x00EE0086
#endif
#ifndef SRCAND
#define SRCAND 0x008800C6
#endif
#ifndef SRCINVERT
#define SRCINVERT 0x00660046
#endif
#ifndef SRCERASE
#define SRCERASE 0x00440328
#endif
#ifndef NOTSRCCOPY
#define NOTSRCCOPY 0x00330008
#endif
#ifndef NOTSRCERASE
#define NOTSRCERASE 0x001100A6
#endif
#ifndef MERGECOPY
#define MERGECOPY 0x00C000CA
#endif
#ifndef MERGEPAINT
#define MERGEPAINT 0x00BB0226
#endif
#ifndef PATCOPY
#define PATCOPY 0x00F00021
#endif
#ifndef PATPAINT
#define PATPAINT 0x00FB0A09
#endif
#ifndef PATINVERT
#define PATINVERT 0x005A0049
#endif
#ifndef DSTINVERT
#define DSTINVERT 0x00550009
#endif
#ifndef BLACKNESS
#define BLACKNESS 0x00000042
#endif
#ifndef WHITENESS
#define WHITENESS 0x00FF0062
#endif
#ifndef DT_TOP
#define DT_TOP 0x00000000
#endif
#ifndef DT_LEFT
#define DT_LEFT 0x00000000
#endif
#ifndef DT_CENTER
#define DT_CENTER 0x00000001
#endif
#ifndef DT_RIGHT
#define DT_RIGHT 0x00000002
#endif
#ifndef DT_VCENTER
#define DT_VCENTER 0x00000004
#endif
#ifndef DT_BOTTOM
#define DT_BOTTOM 0x00000008
#endif
#ifndef DT_WORDBREAK
#define DT_WORDBREAK 0x00000010
#endif
#ifndef DT_SINGLELINE
#define DT_SINGLELINE 0x00000020
#endif
#ifndef DT_EXPANDTABS
#define DT_EXPANDTABS 0x00000040
#endif
#ifndef DT_NOCLIP
#define DT_NOCLIP 0x00000100
#endif
#ifndef DT_CALCRECT
#define DT_CALCRECT 0x00000400
#endif
#ifndef DT_NOPREFIX
#define DT_NOPREFIX 0x00000800
#endif
#ifndef ETO_OPAQUE
#define ETO_OPAQUE 0x0002
#endif
#ifndef ETO_CLIPPED
#define ETO_CLIPPED 0x0004
#endif
#ifndef TA_LEFT
#define TA_LEFT 0
#endif
#ifndef TA_TOP
#define TA_TOP 0
#endif
#ifndef TA_UPDATECP
#define TA_UPDATECP 1
#endif
#ifndef TA_RIGHT
#define TA_RIGHT 2
#endif
#ifndef TA_CENTER
#define TA_CENTER 6
#endif
#ifndef TA_BOTTOM
#define TA_BOTTOM 8
#endif
#ifndef TA_BASELINE
#define TA_BASELINE 24
#endif
#ifndef FW_DONTCARE
#define FW_DONTCARE 0
#endif
#ifndef FW_THIN
#define FW_THIN 100
#endif
#ifndef FW_NORMAL
#define FW_NORMAL 400
#endif
#ifndef FW_BOLD
#define FW_BOLD 700
#endif
#ifndef ANSI_CHARSET
#define ANSI_CHARSET 0
#endif
#ifndef DEFAULT_CHARSET
#define DEFAULT_CHARSET 1
#endif
#ifndef SHIFTJIS_CHARSET
#define SHIFTJIS_CHARSET 128
#endif
#ifndef HANGUL_CHARSET
#define HANGUL_CHARSET 129
#endif
#ifndef GB2312_CHARSET
#define GB2312_CHARSET 134
#endif
#ifndef CHINESEBIG5_CHARSET
#define CHINESEBIG5_CHARSET 136
#endif
#ifndef OUT_DEFAULT_PRECIS
#define OUT_DEFAULT_PRECIS 0
#endif
#ifndef OUT_TT_ONLY_PRECIS
#define OUT_TT_ONLY_PRECIS 7
#endif
#ifndef CLIP_DEFAULT_PRECIS
#define CLIP_DEFAULT_PRECIS 0
#endif
#ifndef DEFAULT_QUALITY
#define DEFAULT_QUALITY 0
#endif
#ifndef DRAFT_QUALITY
#define DRAFT_QUALITY 1
#endif
#ifndef LF_FACESIZE
#define LF_FACESIZE 32
#endif
#ifndef MM_TEXT
#define MM_TEXT 1
#endif
#ifndef WM_CREATE
#define WM_CREATE 0x0001
#endif
#ifndef WM_DESTROY
#define WM_DESTROY 0x0002
#endif
#ifndef WM_SIZE
#define WM_SIZE 0x0005
#endif
#ifndef WM_SETFOCUS
#define WM_SETFOCUS 0x0007
#endif
#ifndef WM_KILLFOCUS
#define WM_KILLFOCUS 0x0008
#endif
#ifndef WM_PAINT
#define WM_PAINT 0x000F
#endif
#ifndef WM_ERASEBKGND
#define WM_ERASEBKGND 0x0014
#endif
#ifndef WM_SETCURSOR
#define WM_SETCURSOR 0x0020
#endif
#ifndef WM_MOUSEACTIVATE
#define WM_MOUSEACTIVATE 0x0021
#endif
#ifndef WM_KEYDOWN
#define WM_KEYDOWN 0x0100
#endif
#ifndef WM_KEYUP
#define WM_KEYUP 0x0101
#endif
#ifndef WM_CHAR
#define WM_CHAR 0x0102
#endif
#ifndef WM_SYSKEYDOWN
#define WM_SYSKEYDOWN 0x0104
#endif
#ifndef WM_SYSKEYUP
#define WM_SYSKEYUP 0x0105
#endif
#ifndef WM_SYSCHAR
#define WM_SYSCHAR 0x0106
#endif
#ifndef WM_COMMAND
#define WM_COMMAND 0x0111
#endif
#ifndef WM_MOUSEMOVE
#define WM_MOUSEMOVE 0x0200
#endif
#ifndef WM_LBUTTONDOWN
#define WM_LBUTTONDOWN 0x0201
#endif
#ifndef WM_LBUTTONUP
#define WM_LBUTTONUP 0x0202
#endif
#ifndef WM_LBUTTONDBLCLK
#define WM_LBUTTONDBLCLK 0x0203
#endif
#ifndef WM_RBUTTONDOWN
#define WM_RBUTTONDOWN 0x0204
#endif
#ifndef WM_RBUTTONUP
#define WM_RBUTTONUP 0x0205
#endif
#ifndef WM_RBUTTONDBLCLK
#define WM_RBUTTONDBLCLK 0x0206
#endif
#ifndef WM_MBUTTONDOWN
#define WM_MBUTTONDOWN 0x0207
#endif
#ifndef WM_MBUTTONUP
#define WM_MBUTTONUP 0x0208
#endif
#ifndef WM_MBUTTONDBLCLK
#define WM_MBUTTONDBLCLK 0x0209
#endif
#ifndef WM_MOUSEWHEEL
#define WM_MOUSEWHEEL 0x020A
#endif
#ifndef WM_CONTEXTMENU
#define WM_CONTEXTMENU 0x007B
#endif
#ifndef WHEEL_DELTA
#define WHEEL_DELTA 120
#endif
#ifndef MK_LBUTTON
#define MK_LBUTTON 0x0001
#endif
#ifndef MK_RBUTTON
#define MK_RBUTTON 0x0002
#endif
#ifndef MK_SHIFT
#define MK_SHIFT 0x0004
#endif
#ifndef MK_CONTROL
#define MK_CONTROL 0x0008
#endif
#ifndef MK_MBUTTON
#define MK_MBUTTON 0x0010
#endif
#ifndef VK_LBUTTON
#define VK_LBUTTON 0x01
#endif
#ifndef VK_RBUTTON
#define VK_RBUTTON 0x02
#endif
#ifndef VK_MBUTTON
#define VK_MBUTTON 0x04
#endif
#ifndef VK_BACK
#define VK_BACK 0x08
#endif
#ifndef VK_TAB
#define VK_TAB 0x09
#endif
#ifndef VK_RETURN
#define VK_RETURN 0x0D
#endif
#ifndef VK_SHIFT
#define VK_SHIFT 0x10
#endif
#ifndef VK_CONTROL
#define VK_CONTROL 0x11
#endif
#ifndef VK_MENU
#define VK_MENU 0x12
#endif
#ifndef VK_ESCAPE
#define VK_ESCAPE 0x1B
#endif
#ifndef VK_SPACE
#define VK_SPACE 0x20
#endif
#ifndef VK_PRIOR
#define VK_PRIOR 0x21
#endif
#ifndef VK_NEXT
#define VK_NEXT 0x22
#endif
#ifndef VK_END
#define VK_END 0x23
#endif
#ifndef VK_HOME
#define VK_HOME 0x24
#endif
#ifndef VK_LEFT
#define VK_LEFT 0x25
#endif
#ifndef VK_UP
#define VK_UP 0x26
#endif
#ifndef VK_RIGHT
#define VK_RIGHT 0x27
#endif
#ifndef VK_DOWN
#define VK_DOWN 0x28
#endif
#ifndef VK_DELETE
#define VK_DELETE 0x2E
#endif
#ifndef VK_ADD
#define VK_ADD 0x6B
#endif
#ifndef VK_SUBTRACT
#define VK_SUBTRACT 0x6D
#endif
#ifndef VK_F1
#define VK_F1 0x70
#endif
#ifndef VK_OEM_PLUS
#define VK_OEM_PLUS 0xBB
#endif
#ifndef VK_OEM_MINUS
#define VK_OEM_MINUS 0xBD
#endif
#ifndef IDOK
#define IDOK 1
#endif
#ifndef IDCANCEL
#define IDCANCEL 2
#endif
#ifndef MB_OK
#define MB_OK 0x00000000
#endif
#ifndef RDW_INVALIDATE
#define RDW_INVALIDATE 0x0001
#endif
#ifndef RDW_ERASE
#define RDW_ERASE 0x0004
#endif
#ifndef RDW_UPDATENOW
#define RDW_UPDATENOW 0x0100
#endif
#ifndef RGB
#define RGB(r, g, b) ::qvis::Rgb((r), (g), (b))
#endif
#ifndef GetRValue
#define GetRValue(c) ((BYTE)((c) & 0xFF))
#endif
#ifndef GetGValue
#define GetGValue(c) ((BYTE)(((c) >> 8) & 0xFF))
#endif
#ifndef GetBValue
#define GetBValue(c) ((BYTE)(((c) >> 16) & 0xFF))
#endif
#ifndef MAKELPARAM
#define MAKELPARAM(lo, hi) ((LPARAM)(DWORD)(((WORD)(lo)) | (((DWORD)(WORD)(hi)) << 16)))
#endif
#ifndef MAKEWPARAM
#define MAKEWPARAM(lo, hi) ((WPARAM)(DWORD)(((WORD)(lo)) | (((DWORD)(WORD)(hi)) << 16)))
#endif
#ifndef LOWORD
#define LOWORD(v) ((WORD)(((DWORD)(v)) & 0xFFFF))
#endif
#ifndef HIWORD
#define HIWORD(v) ((WORD)((((DWORD)(v)) >> 16) & 0xFFFF))
#endif
#ifndef GET_X_LPARAM
#define GET_X_LPARAM(lp) ((int)(short)LOWORD(lp))
#endif
#ifndef GET_Y_LPARAM
#define GET_Y_LPARAM(lp) ((int)(short)HIWORD(lp))
#endif
#ifndef GET_WHEEL_DELTA_WPARAM
#define GET_WHEEL_DELTA_WPARAM(wp) ((short)HIWORD(wp))
#endif
#ifndef GET_KEYSTATE_WPARAM
#define GET_KEYSTATE_WPARAM(wp) (LOWORD(wp))
#endif

#endif  // QVIS_COMPAT_WIN32_NAMES_H_
