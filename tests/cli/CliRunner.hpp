// Runs the vqxml tool as a separate process and collects what it did.
#ifndef VQXML_TESTS_CLI_CLIRUNNER_HPP
#define VQXML_TESTS_CLI_CLIRUNNER_HPP

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "TestFiles.hpp"

namespace clitest {

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

inline std::string testpki(const std::string& name) {
    return testfiles::dataPath("testpki/" + name);
}

inline std::string invoice() {
    return testfiles::dataPath("dsig/taxinvoice.xml");
}

// Runs `vqxml args...` with stdinText on its standard input, in the C.UTF-8 locale.
inline Outcome vqxml(const std::vector<std::string>& args, const std::string& stdinText = "") {
    const std::string in = testfiles::scratch("cli-stdin"), out = testfiles::scratch("cli-stdout"),
                      err = testfiles::scratch("cli-stderr");
    testfiles::write(in, stdinText);
    std::vector<char*> argv{const_cast<char*>(VQXML_CLI)};
    for (const std::string& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        const std::string* paths[] = {&in, &out, &err};
        for (int fd = 0; fd < 3; ++fd) {
            int f = open(paths[fd]->c_str(), fd == 0 ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(f, fd);
            close(f);
        }
        setenv("LC_ALL", "C.UTF-8", 1);
        execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    Outcome o;
    o.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    o.out = testfiles::read(out);
    o.err = testfiles::read(err);
    for (const std::string* p : {&in, &out, &err})
        unlink(p->c_str());
    return o;
}

// Runs a shell command line as it is, redirections included.
inline int shell(const std::string& command) {
    return std::system(command.c_str());
}

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace clitest

#endif
