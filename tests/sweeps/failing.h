// The system beneath the library, as the sweeps need it: any call can be made to fail, and what is held is
// counted. Natively that is the stand-in; in TIFF.DLL its imports are led through calls of our own.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace sweeps {

// The first ones are those of the stand-in. Draw is GDI, the clipboard and dialogs.
enum Kind : unsigned {
    Allocation = 1,
    Lock = 2,
    Open = 4,
    Read = 8,
    Write = 16,
    Seek = 32,
    Delete = 64,
    Move = 128,
    Draw = 256,
    Library = 512
};

// Refuses the n-th call of these kinds, counted from 1, and then all calls of the later kinds. A torn
// write leaves half of its bytes.
void FailNth(unsigned n, unsigned kinds, unsigned laterKinds, bool torn);
// True when a call was refused. The results of the operation belong to the caller from now on.
bool StopFailing();
const char* RefusedCall();

struct Held {
    int64_t blocks, locks, handles, objects;

    bool operator==(const Held&) const = default;
};

Held Live();
// A block or an object that the library handed over is the caller's.
void Forget(const void* handed);

// Lets the library find the substitutes of its companions.
void ProvideSiblings();

// Where the library makes its temporary files; no separator at the end.
std::string TempFolder();

} // namespace sweeps
