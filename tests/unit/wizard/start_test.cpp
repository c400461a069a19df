#include "wizard/start.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

TEST(SecureStandardStreams, OpensWhatIsClosed) {
    const auto secure_closed_streams = [] {
        ::close(STDIN_FILENO);
        ::close(STDOUT_FILENO);
        secure_standard_streams();
        const bool are_open =
            ::fcntl(STDIN_FILENO, F_GETFD) >= 0 && ::fcntl(STDOUT_FILENO, F_GETFD) >= 0;
        std::exit(are_open ? 0 : 1);
    };
    EXPECT_EXIT(secure_closed_streams(), testing::ExitedWithCode(0), "");
}
