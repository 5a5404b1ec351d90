// What files cost the process that reads or writes them: the command is run on them by itself.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>

#include "tests/host/images/ImageTestFiles.h"
#include "tests/support/Places.h"

namespace host {

struct Cost {
    std::string err;
    int exitCode = -1;
    long megabytes = 0;  // resident at most
};

// Runs a script with arguments.
inline Cost RunScript(const TemporaryDirectory& directory, const std::string& script,
                      std::vector<std::string> arguments) {
    WriteBytes(directory.Path("script.rbs"), script);
    const std::string messages = directory.Path("messages");
    std::vector<std::string> words{support::CommandFile(), "--plugin", support::PluginFile(), "run",
                                   directory.Path("script.rbs")};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (!std::freopen(messages.c_str(), "wb", stderr)) _exit(126);
        execv(argv[0], argv.data());
        _exit(127);
    }
    Cost cost;
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (WIFEXITED(status)) cost.exitCode = WEXITSTATUS(status);
    cost.megabytes = usage.ru_maxrss / 1024;
    cost.err = ReadBytes(messages);
    return cost;
}

inline const std::string kOpen = "Dim p As Picture = GetFolderItem(App.Arguments(0)).OpenAsPicture\n";

// A sanitizer's own memory is beyond telling.
class ImageMemory : public testing::Test {
  protected:
    void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "sanitized";
#endif
    }

    // An unreadable file is refused with a message that ends so, and for less than 100 MB.
    void ExpectRefusal(const std::string& name, const std::string& message) {
        const Cost cost = RunScript(directory, kOpen, {directory.Path(name)});
        EXPECT_EQ(cost.exitCode, 1);
        const std::string expected = directory.Path(name) + ": " + message + "\n";
        EXPECT_NE(cost.err.find(expected), std::string::npos) << cost.err;
        EXPECT_LT(cost.megabytes, 100);
    }

    TemporaryDirectory directory;
};

}  // namespace host
