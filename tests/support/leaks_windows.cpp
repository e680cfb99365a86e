#include "support/leaks.h"

NoLeaks::NoLeaks() : check(nullptr)
{
}

NoLeaks::~NoLeaks() = default;
