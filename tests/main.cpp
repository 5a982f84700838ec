// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

/// The main function of every test program. The exit status is 77 if a test was skipped and none failed.
int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    int const failed = RUN_ALL_TESTS();
    bool const skipped = testing::UnitTest::GetInstance()->skipped_test_count() > 0;
    return failed == 0 && skipped ? 77 : failed;
}
