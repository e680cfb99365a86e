// The kernel, handle types and bitmap records of Win32 that the library needs, for building the pure
// files on another system. GDI and USER functions are left out on purpose: a pure file that calls one
// must not compile. Constants are macros as in the real header, so that a clash of names shows here too.
#pragma once

#include <stdint.h>

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260

typedef int32_t BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef uintptr_t SIZE_T;

typedef void* HANDLE;
typedef HANDLE HGLOBAL;
typedef struct HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef struct HBITMAP__* HBITMAP;
typedef struct HPALETTE__* HPALETTE;
typedef struct HDC__* HDC;
typedef struct HWND__* HWND;
typedef intptr_t (*FARPROC)();
typedef void* LPVOID;
typedef const char* LPCSTR;
typedef char* LPSTR;
typedef char16_t WCHAR;
typedef const WCHAR* LPCWSTR;
typedef WCHAR* LPWSTR;

typedef struct LARGE_INTEGER {
    int64_t QuadPart;
} LARGE_INTEGER;

typedef struct SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
} SYSTEMTIME;

typedef struct BY_HANDLE_FILE_INFORMATION {
    DWORD dwVolumeSerialNumber, nFileIndexHigh, nFileIndexLow;
} BY_HANDLE_FILE_INFORMATION;

#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)
#define INVALID_FILE_ATTRIBUTES ((DWORD)-1)
#define ERROR_FILE_NOT_FOUND 2
#define ERROR_PATH_NOT_FOUND 3
#define ERROR_ACCESS_DENIED 5
#define ERROR_SHARING_VIOLATION 32
#define ERROR_LOCK_VIOLATION 33
#define ERROR_DISK_FULL 112
#define ERROR_ALREADY_EXISTS 183
#define INVALID_FILE_SIZE ((DWORD)-1)
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 0x00000001u
#define FILE_SHARE_WRITE 0x00000002u
#define CREATE_NEW 1u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define FILE_ATTRIBUTE_READONLY 0x00000001u
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010u
#define FILE_ATTRIBUTE_NORMAL 0x00000080u
#define FILE_BEGIN 0u
#define FILE_CURRENT 1u
#define FILE_END 2u
#define GMEM_FIXED 0x0000u
#define GMEM_MOVEABLE 0x0002u
#define GMEM_ZEROINIT 0x0040u
#define CP_ACP 0u
#define CP_UTF8 65001u
#define MB_ERR_INVALID_CHARS 0x0008u
#define WC_ERR_INVALID_CHARS 0x0080u
#define TLS_OUT_OF_INDEXES ((DWORD)0xFFFFFFFF)

typedef struct RECT {
    LONG left, top, right, bottom;
} RECT;

typedef struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth, biHeight;
    WORD biPlanes, biBitCount;
    DWORD biCompression, biSizeImage;
    LONG biXPelsPerMeter, biYPelsPerMeter;
    DWORD biClrUsed, biClrImportant;
} BITMAPINFOHEADER;
static_assert(sizeof(BITMAPINFOHEADER) == 40, "layout");

typedef struct BITMAPCOREHEADER {
    DWORD bcSize;
    WORD bcWidth, bcHeight, bcPlanes, bcBitCount;
} BITMAPCOREHEADER;
static_assert(sizeof(BITMAPCOREHEADER) == 12, "layout");

typedef struct RGBQUAD {
    BYTE rgbBlue, rgbGreen, rgbRed, rgbReserved;
} RGBQUAD;

typedef struct RGBTRIPLE {
    BYTE rgbtBlue, rgbtGreen, rgbtRed;
} RGBTRIPLE;

typedef struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
} BITMAPINFO;
static_assert(sizeof(BITMAPINFO) == 44, "layout");

typedef struct LOGFONTA {
    LONG lfHeight, lfWidth, lfEscapement, lfOrientation, lfWeight;
    BYTE lfItalic, lfUnderline, lfStrikeOut, lfCharSet, lfOutPrecision, lfClipPrecision, lfQuality,
        lfPitchAndFamily;
    char lfFaceName[32];
} LOGFONTA;
static_assert(sizeof(LOGFONTA) == 60, "layout");

extern "C" {

DWORD GetLastError(void);
HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, void* security, DWORD disposition, DWORD flags,
                   HANDLE pattern);
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, DWORD* bytesRead, void* overlapped);
BOOL WriteFile(HANDLE file, const void* buffer, DWORD bytes, DWORD* bytesWritten, void* overlapped);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD origin);
DWORD GetFileSize(HANDLE file, DWORD* sizeHigh);
BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* facts);
BOOL SetEndOfFile(HANDLE file);
BOOL CloseHandle(HANDLE handle);
BOOL DeleteFileA(LPCSTR path);
BOOL MoveFileA(LPCSTR from, LPCSTR to);
DWORD GetFileAttributesA(LPCSTR path);
DWORD GetTempPathA(DWORD bufferBytes, LPSTR buffer);
UINT GetTempFileNameA(LPCSTR folder, LPCSTR prefix, UINT unique, LPSTR name);
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, void* security, DWORD disposition, DWORD flags,
                   HANDLE pattern);
BOOL DeleteFileW(LPCWSTR path);
BOOL MoveFileW(LPCWSTR from, LPCWSTR to);
DWORD GetFileAttributesW(LPCWSTR path);
DWORD GetTempPathW(DWORD bufferCharacters, LPWSTR buffer);
UINT GetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR name);
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int bytes, LPWSTR wide, int room);
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int characters, LPSTR text, int room,
                        LPCSTR unknown, BOOL* used);

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);
HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T bytes, UINT flags);
LPVOID GlobalLock(HGLOBAL block);
BOOL GlobalUnlock(HGLOBAL block);
HGLOBAL GlobalFree(HGLOBAL block);
SIZE_T GlobalSize(HGLOBAL block);

DWORD TlsAlloc();
LPVOID TlsGetValue(DWORD slot);
BOOL TlsSetValue(DWORD slot, LPVOID value);
BOOL TlsFree(DWORD slot);
[[noreturn]] void ExitThread(DWORD code);
void Sleep(DWORD milliseconds);
UINT SetHandleCount(UINT count);
DWORD GetTickCount();
void GetLocalTime(SYSTEMTIME* time);
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD bufferCharacters);
HMODULE LoadLibraryA(LPCSTR name);
HMODULE LoadLibraryW(LPCWSTR name);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
BOOL FreeLibrary(HMODULE module);
}
