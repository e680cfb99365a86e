#include "gdi/desktop.h"

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments)
{
    if (argumentCount == 3 && std::string(arguments[1]) == "--clipboard")
        return WriteClipboard(arguments[2]);
    testing::InitGoogleTest(&argumentCount, arguments);
    return RUN_ALL_TESTS();
}
