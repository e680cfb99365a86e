#include "core/process_state.h"
#include "tiff/errors.h"

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    if (!tiff::AttachProcess(nullptr))
        return 1;
    TiffError(); // creates the thread's record: a failing allocation in a test must not end the thread
    return RUN_ALL_TESTS();
}
