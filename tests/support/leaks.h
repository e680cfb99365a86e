// Expects at the end of a scope the same handles and blocks as at its beginning. Only the stand-in can count
// them; under Windows it does nothing.
#pragma once

class NoLeaks {
public:
    NoLeaks();
    NoLeaks(const NoLeaks&) = delete;
    NoLeaks& operator=(const NoLeaks&) = delete;
    ~NoLeaks();

private:
    void* check;
};
