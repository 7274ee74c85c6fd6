#include "support/TestFiles.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tuskel_test {

TempDir::TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/tuskel-test-XXXXXX";
    char* made = mkdtemp(&pattern[0]);
    if (made == nullptr) ADD_FAILURE() << "mkdtemp failed";
    _path = pattern;
}

TempDir::~TempDir() {
    if (!_path.empty()) std::system(("rm -rf " + shellQuote(_path)).c_str());
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.good()) << "cannot read " << path;
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

void writeFile(const std::string& path, const std::string& data) {
    std::ofstream out(path, std::ios::binary);
    out.write(data.data(), static_cast<std::streamsize>(data.size()));
    EXPECT_TRUE(out.good()) << "cannot write " << path;
}

int runCommand(const std::string& command) {
    int status = std::system(command.c_str());
    EXPECT_NE(status, -1) << command;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string commandOutput(const std::string& command) {
    std::string out;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot run " << command;
        return out;
    }
    char buf[65536];
    for (size_t n; (n = fread(buf, 1, sizeof buf, pipe)) > 0;) out.append(buf, n);
    int status = pclose(pipe);
    EXPECT_EQ(status, 0) << command;
    return out;
}

std::string shellQuote(const std::string& text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

}  // namespace tuskel_test
