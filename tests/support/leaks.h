// Expects at the end of a scope what was held at its beginning. Counts only where the stand-in
// can; under Windows it is empty.
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
