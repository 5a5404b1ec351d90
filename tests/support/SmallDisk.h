// A disk with room for files of so many bytes, while it lives.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstdint>

namespace support {

class SmallDisk {
  public:
    explicit SmallDisk(std::uint64_t bytes) {
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit small = before_;
        small.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

  private:
    rlimit before_{};
    void (*handler_)(int);
};

}  // namespace support
