#include "standin/standin.h"
#include "support/leaks.h"
#include "tiff/errors.h"

// The thread's own record is made on first use and is no leak.
NoLeaks::NoLeaks() : check((TiffError(), new standin::LeakCheck))
{
}

NoLeaks::~NoLeaks()
{
    delete static_cast<standin::LeakCheck*>(check);
}
