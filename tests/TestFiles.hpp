// Reading test data, scratch files and running peer programs.
#ifndef VQXML_TESTS_TESTFILES_HPP
#define VQXML_TESTS_TESTFILES_HPP

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace testfiles {

inline std::string dataPath(const std::string& relative) {
    return std::string(VQXML_TEST_DATA_DIR) + "/" + relative;
}

// The whole file, or "" when there is none (a peer's output it may not write).
inline std::string readIfAny(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// The whole file; a file that cannot be opened fails the test that asked, naming it.
inline std::string read(const std::string& path) {
    if (!std::ifstream(path))
        throw std::runtime_error("cannot read " + path);
    return readIfAny(path);
}

inline void write(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline bool haveProgram(const char* name) {
    return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs a shell command quietly; its exit status.
inline int run(const std::string& command) {
    int status = std::system((command + " >/dev/null 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A scratch file name under the system's temporary folder.
inline std::string scratch(const std::string& name) {
    const char* dir = std::getenv("TMPDIR");
    return std::string(dir != nullptr ? dir : "/tmp") + "/vqxml-test-" + std::to_string(::getpid()) + "-" + name;
}

// A folder for scratch files, removed with what it holds at the end of its scope.
class ScratchDir {
public:
    ScratchDir() {
        std::string pattern = scratch("XXXXXX");
        if (::mkdtemp(&pattern[0]) != nullptr)
            m_dir = pattern;
    }
    ~ScratchDir() {
        if (!m_dir.empty())
            run("rm -rf '" + m_dir + "'");
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::string operator()(const std::string& name) const { return m_dir + "/" + name; }

private:
    std::string m_dir;
};

}  // namespace testfiles

#endif
