// A script in a file that lives as long as the test.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

class ScriptOf {
  public:
    explicit ScriptOf(const std::string& text) {
        path_ = std::filesystem::temp_directory_path() / ("tqx-command-test-" + std::to_string(getpid()) + ".rbs");
        std::ofstream(path_) << text;
    }
    ~ScriptOf() { std::filesystem::remove(path_); }
    ScriptOf(const ScriptOf&) = delete;
    ScriptOf& operator=(const ScriptOf&) = delete;
    std::string path() const { return path_.string(); }

  private:
    std::filesystem::path path_;
};
