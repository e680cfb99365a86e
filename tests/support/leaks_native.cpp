#include "standin/standin.h"
#include "support/leaks.h"
#include "tiff/errors.h"

// The first call creates the thread's own record, which is not a leak.
NoLeaks::NoLeaks() : check((TiffError(), new standin::LeakCheck))
{
}

NoLeaks::~NoLeaks()
{
    delete static_cast<standin::LeakCheck*>(check);
}
