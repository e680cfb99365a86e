#include "core/process_state.h"
#include "tiff/errors.h"

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    if (!tiff::AttachProcess(nullptr))
        return 1;
    TiffError(); // the thread has its record: a test that lets allocations fail does not end it
    return RUN_ALL_TESTS();
}
