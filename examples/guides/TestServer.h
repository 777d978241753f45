// The emulator, as the tests of an application start it.

#pragma once

#include <KorvoGitService/KorvoGitService.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

/// korvogit-emulator, running for as long as the object lives. The public services' names lead to
/// it, so that the code under test needs no change. To be made before the first service.
class TestServer {
public:
    /// @throws std::runtime_error when the emulator does not start
    explicit TestServer(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"korvogit-emulator", "--json", "--until-stdin-closes"});
        const auto text = firstLineOf(options);
        const auto document = RKTJSONSerialization::JSONObjectWithData(text);
        if (!document) throw std::runtime_error("The emulator did not start: " + text);
        const auto description = document->root();
        const auto port = kc_objectOfClass<RKTNumber>(description, "httpsPort").value();
        caFile_ = kc_objectOfClass<std::string_view>(description, "caFile").value();
        url_ = kc_objectOfClass<std::string_view>(description, "https").value();

        RKTNetworkSettings settings;
        settings.certificateAuthorityFile = caFile_;
        const auto hosts = kc_objectOfClass<RKTJSONArray>(description, "hosts").value();
        for (const RKTJSONValue host : hosts) {
            settings.hostMappings.push_back({std::string(host.string().value()), 443, "127.0.0.1",
                                             static_cast<std::uint16_t>(port.integerValue())});
        }
        RKTNetworkSettings::setShared(settings);
    }

    /// The emulator ends with its standard input.
    ~TestServer() {
        close(input_);
        waitpid(process_, nullptr, 0);
    }

    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    /// The address of the self-hosted services.
    const std::string& url() const { return url_; }
    const std::string& caFile() const { return caFile_; }

private:
    /// Starts the emulator that KORVOGIT_EMULATOR names, or else the one in the PATH.
    std::string firstLineOf(const std::vector<std::string>& arguments) {
        int input[2];
        int output[2];
        if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
            throw std::runtime_error("There is no pipe.");
        }
        std::vector<char*> pointers;
        pointers.reserve(arguments.size() + 1);
        for (const auto& argument : arguments) pointers.push_back(const_cast<char*>(&argument[0]));
        pointers.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        const char* const named = std::getenv("KORVOGIT_EMULATOR");
        const int failure = posix_spawnp(&process_, named ? named : pointers[0], &actions, nullptr,
                                         pointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(input[0]);
        close(output[1]);
        input_ = input[1];

        std::string line;
        for (char c = 0; read(output[0], &c, 1) == 1 && c != '\n';) line += c;
        close(output[0]);
        if (failure != 0) throw std::runtime_error("korvogit-emulator cannot be started.");
        return line;
    }

    pid_t process_ = -1;
    int input_ = -1;
    std::string url_;
    std::string caFile_;
};
