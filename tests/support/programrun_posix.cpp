#include "tests/support/programrun.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

ProgramRunner::ProgramRunner(std::string inFolder) : mFolder(std::move(inFolder)) {}

ProgramResult ProgramRunner::Run(const std::vector<std::string>& inArguments) {
    const std::string output = mOutput.empty() ? mOwnFolder / "stdout" : mOutput;
    const int descriptor = open(output.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0666);
    const pid_t process = Start(inArguments, descriptor);
    close(descriptor);
    ProgramResult result = Finish(process);
    if (mOutput.empty())
        result.mOut = ReadTestFile(output);
    return result;
}

pid_t ProgramRunner::Start(const std::vector<std::string>& inArguments, int inOutput) {
    // Other users, too, must get in: some runs give up the rights of the superuser.
    namespace fs = std::filesystem;
    fs::permissions(mOwnFolder.GetPath(), fs::perms::all);
    fs::create_directories(mOwnFolder / "tmp");
    fs::permissions(mOwnFolder / "tmp", fs::perms::all);
    const pid_t process = fork();
    if (process == 0)
        Become(inArguments, inOutput);
    return process;
}

void ProgramRunner::Become(const std::vector<std::string>& inArguments, int inOutput) const {
    const int program = open(PARVIGIF_PROGRAM, O_PATH | O_CLOEXEC); // may lie where nobody can look
    const int errors = open((mOwnFolder / "stderr").c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0666);
    const bool ready = dup2(inOutput, STDOUT_FILENO) >= 0 && dup2(errors, STDERR_FILENO) >= 0 &&
                       chdir(mFolder.c_str()) == 0 &&
                       (mInput.empty() || dup2(open(mInput.c_str(), O_RDONLY), STDIN_FILENO) >= 0) &&
                       (!mAsNobody || geteuid() != 0 ||
                        (setgroups(0, nullptr) == 0 && setgid(65534) == 0 && setuid(65534) == 0)) &&
                       (!mBeforeStart || mBeforeStart());
    if (ready) {
        setenv("XDG_CONFIG_DIRS", (mOwnFolder / "machine").c_str(), 1);
        setenv("XDG_CONFIG_HOME", (mOwnFolder / "user").c_str(), 1);
        setenv("XDG_STATE_HOME", (mOwnFolder / "state").c_str(), 1);
        setenv("TMPDIR", (mOwnFolder / "tmp").c_str(), 1);
        std::vector<char*> arguments = {const_cast<char*>("parvigif")};
        for (const std::string& argument : inArguments)
            arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
        fexecve(program, arguments.data(), environ);
    }
    _exit(99);
}

ProgramResult ProgramRunner::Finish(pid_t inProcess) {
    int status = 0;
    waitpid(inProcess, &status, 0);
    ProgramResult result;
    result.mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    result.mErr = ReadTestFile(mOwnFolder / "stderr");
    return result;
}
