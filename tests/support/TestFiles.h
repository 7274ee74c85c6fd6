#ifndef TUSKEL_TEST_TESTFILES_H
#define TUSKEL_TEST_TESTFILES_H

#include <string>

namespace tuskel_test {

// A fresh directory under $TMPDIR, removed with everything in it.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return _path; }
    std::string file(const std::string& name) const { return _path + "/" + name; }

private:
    std::string _path;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& data);

// Runs a shell command and answers its exit status; the test fails when the
// command could not be started.
int runCommand(const std::string& command);
// Runs a shell command and answers its standard output (binary safe).
std::string commandOutput(const std::string& command);

// Single-quotes a path for the shell.
std::string shellQuote(const std::string& text);

}  // namespace tuskel_test

#endif
