#include "core/process_state.h"

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    if (!tiff::AttachProcess(nullptr))
        return 1;
    return RUN_ALL_TESTS();
}
