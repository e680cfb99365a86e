// The kernel functions, handle types and bitmap records of Win32, to build the pure files on another system.
// GDI and USER functions are missing on purpose: a pure file that calls one must not compile. Constants are
// macros as in the real header, so that name clashes show here too.
#pragma once

#include <stdint.h>

#define WINAPI
#define APIENTRY WINAPI
#define CALLBACK

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260

typedef int32_t BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef intptr_t LONG_PTR;
typedef uintptr_t ULONG_PTR;
typedef uintptr_t SIZE_T;

typedef void* HANDLE;
typedef HANDLE HGLOBAL;
typedef HANDLE HLOCAL;
typedef struct HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef struct HBITMAP__* HBITMAP;
typedef struct HPALETTE__* HPALETTE;
typedef struct HDC__* HDC;
typedef struct HWND__* HWND;
typedef LONG_PTR(WINAPI* FARPROC)();

typedef void* LPVOID;
typedef const void* LPCVOID;
typedef const char* LPCSTR;
typedef char* LPSTR;
typedef DWORD* LPDWORD;
typedef LONG* PLONG;
typedef struct SECURITY_ATTRIBUTES__* LPSECURITY_ATTRIBUTES;
typedef struct OVERLAPPED__* LPOVERLAPPED;

typedef union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
} LARGE_INTEGER, *PLARGE_INTEGER;

typedef struct SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
} SYSTEMTIME, *LPSYSTEMTIME;

typedef struct FILETIME {
    DWORD dwLowDateTime, dwHighDateTime;
} FILETIME;

typedef struct BY_HANDLE_FILE_INFORMATION {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime, ftLastAccessTime, ftLastWriteTime;
    DWORD dwVolumeSerialNumber;
    DWORD nFileSizeHigh, nFileSizeLow;
    DWORD nNumberOfLinks;
    DWORD nFileIndexHigh, nFileIndexLow;
} BY_HANDLE_FILE_INFORMATION, *LPBY_HANDLE_FILE_INFORMATION;

#define INVALID_HANDLE_VALUE ((HANDLE)(LONG_PTR)-1)
#define INVALID_FILE_ATTRIBUTES ((DWORD)-1)
#define INVALID_FILE_SIZE ((DWORD)-1)
#define INVALID_SET_FILE_POINTER ((DWORD)-1)

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 0x00000001u
#define FILE_SHARE_WRITE 0x00000002u
#define FILE_SHARE_DELETE 0x00000004u
#define CREATE_NEW 1u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define TRUNCATE_EXISTING 5u
#define FILE_ATTRIBUTE_READONLY 0x00000001u
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010u
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020u
#define FILE_ATTRIBUTE_NORMAL 0x00000080u
#define FILE_ATTRIBUTE_TEMPORARY 0x00000100u
#define FILE_FLAG_RANDOM_ACCESS 0x10000000u
#define FILE_FLAG_SEQUENTIAL_SCAN 0x08000000u
#define FILE_BEGIN 0u
#define FILE_CURRENT 1u
#define FILE_END 2u

#define GMEM_FIXED 0x0000u
#define GMEM_MOVEABLE 0x0002u
#define GMEM_ZEROINIT 0x0040u
#define GMEM_DDESHARE 0x2000u
#define GMEM_SHARE 0x2000u
#define GMEM_DISCARDED 0x4000u
#define GMEM_INVALID_HANDLE 0x8000u
#define GMEM_LOCKCOUNT 0x00FFu
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)

#define TLS_OUT_OF_INDEXES ((DWORD)0xFFFFFFFF)

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

#define NO_ERROR 0u
#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_PATH_NOT_FOUND 3u
#define ERROR_TOO_MANY_OPEN_FILES 4u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_SEEK 25u
#define ERROR_WRITE_FAULT 29u
#define ERROR_READ_FAULT 30u
#define ERROR_GEN_FAILURE 31u
#define ERROR_SHARING_VIOLATION 32u
#define ERROR_HANDLE_EOF 38u
#define ERROR_FILE_EXISTS 80u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_BUFFER_OVERFLOW 111u
#define ERROR_DISK_FULL 112u
#define ERROR_INSUFFICIENT_BUFFER 122u
#define ERROR_MOD_NOT_FOUND 126u
#define ERROR_PROC_NOT_FOUND 127u
#define ERROR_NEGATIVE_SEEK 131u
#define ERROR_DISCARDED 157u
#define ERROR_NOT_LOCKED 158u
#define ERROR_ALREADY_EXISTS 183u
#define ERROR_DIRECTORY 267u

#define BI_RGB 0u
#define BI_RLE8 1u
#define BI_RLE4 2u
#define BI_BITFIELDS 3u

typedef struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
} BITMAPINFOHEADER, *LPBITMAPINFOHEADER;
static_assert(sizeof(BITMAPINFOHEADER) == 40, "layout");

typedef struct BITMAPCOREHEADER {
    DWORD bcSize;
    WORD bcWidth;
    WORD bcHeight;
    WORD bcPlanes;
    WORD bcBitCount;
} BITMAPCOREHEADER, *LPBITMAPCOREHEADER;
static_assert(sizeof(BITMAPCOREHEADER) == 12, "layout");

typedef struct RGBQUAD {
    BYTE rgbBlue, rgbGreen, rgbRed, rgbReserved;
} RGBQUAD;
static_assert(sizeof(RGBQUAD) == 4, "layout");

#pragma pack(push, 1)
typedef struct RGBTRIPLE {
    BYTE rgbtBlue, rgbtGreen, rgbtRed;
} RGBTRIPLE;
#pragma pack(pop)
static_assert(sizeof(RGBTRIPLE) == 3, "layout");

typedef struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
} BITMAPINFO, *LPBITMAPINFO;
static_assert(sizeof(BITMAPINFO) == 44, "layout");

typedef struct BITMAPCOREINFO {
    BITMAPCOREHEADER bmciHeader;
    RGBTRIPLE bmciColors[1];
} BITMAPCOREINFO, *LPBITMAPCOREINFO;

#pragma pack(push, 2)
typedef struct BITMAPFILEHEADER {
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
} BITMAPFILEHEADER;
#pragma pack(pop)
static_assert(sizeof(BITMAPFILEHEADER) == 14, "layout");

extern "C" {

HANDLE WINAPI CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD disposition, DWORD flags, HANDLE pattern);
BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, LPDWORD bytesRead, LPOVERLAPPED overlapped);
BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD bytesWritten,
                      LPOVERLAPPED overlapped);
DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD origin);
BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD origin);
DWORD WINAPI GetFileSize(HANDLE file, LPDWORD sizeHigh);
BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);
BOOL WINAPI GetFileInformationByHandle(HANDLE file, LPBY_HANDLE_FILE_INFORMATION facts);
BOOL WINAPI FlushFileBuffers(HANDLE file);
BOOL WINAPI SetEndOfFile(HANDLE file);
BOOL WINAPI CloseHandle(HANDLE handle);
BOOL WINAPI DeleteFileA(LPCSTR path);
BOOL WINAPI MoveFileA(LPCSTR from, LPCSTR to);
BOOL WINAPI CopyFileA(LPCSTR from, LPCSTR to, BOOL failIfExists);
DWORD WINAPI GetFileAttributesA(LPCSTR path);
DWORD WINAPI GetTempPathA(DWORD bufferBytes, LPSTR buffer);
UINT WINAPI GetTempFileNameA(LPCSTR folder, LPCSTR prefix, UINT unique, LPSTR name);

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes);
HGLOBAL WINAPI GlobalReAlloc(HGLOBAL block, SIZE_T bytes, UINT flags);
LPVOID WINAPI GlobalLock(HGLOBAL block);
BOOL WINAPI GlobalUnlock(HGLOBAL block);
HGLOBAL WINAPI GlobalFree(HGLOBAL block);
SIZE_T WINAPI GlobalSize(HGLOBAL block);
UINT WINAPI GlobalFlags(HGLOBAL block);

DWORD WINAPI TlsAlloc(void);
LPVOID WINAPI TlsGetValue(DWORD slot);
BOOL WINAPI TlsSetValue(DWORD slot, LPVOID value);
BOOL WINAPI TlsFree(DWORD slot);
[[noreturn]] void WINAPI ExitThread(DWORD code);
DWORD WINAPI GetCurrentThreadId(void);
DWORD WINAPI GetLastError(void);
void WINAPI SetLastError(DWORD error);
void WINAPI Sleep(DWORD milliseconds);
UINT WINAPI SetHandleCount(UINT count);
DWORD WINAPI GetTickCount(void);
void WINAPI GetLocalTime(LPSYSTEMTIME time);

DWORD WINAPI GetModuleFileNameA(HMODULE module, LPSTR buffer, DWORD bufferBytes);
HMODULE WINAPI LoadLibraryA(LPCSTR name);
FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);
BOOL WINAPI FreeLibrary(HMODULE module);
}
