// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

/// Of every test program. The exit status is 77 if nothing has failed and a test has been skipped.
int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    int const failed = RUN_ALL_TESTS();
    bool const skipped = testing::UnitTest::GetInstance()->skipped_test_count() > 0;
    return failed == 0 && skipped ? 77 : failed;
}
