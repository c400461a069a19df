// A limit of this process for a while: of the files it may open (RLIMIT_NOFILE) or of their size
// (RLIMIT_FSIZE), beyond which a write fails as on a full disk.
#pragma once

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

class process_limit {
  public:
    process_limit(int resource, rlim_t limit)
        : resource_(resource), handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(::getrlimit(resource_, &before_), 0);
        const rlimit lower{limit, before_.rlim_max};
        EXPECT_EQ(::setrlimit(resource_, &lower), 0);
    }
    ~process_limit() {
        ::setrlimit(resource_, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    process_limit(const process_limit &) = delete;
    process_limit &operator=(const process_limit &) = delete;

  private:
    int resource_;
    rlimit before_{};
    void (*handler_)(int);
};
