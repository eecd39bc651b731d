// zrasn: looks into any encoding, turns records into JSON and back.
#include <csignal>
#include <cstdio>
#include <new>

#include "base/file_output.h"
#include "cli/command_line.h"
#include "input/input.h"

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_DFL);  // a reader that goes away ends the program quietly
    int code = zr::tool::exit_good;
    try {
        code = zr::tool::run_command_line(argc, argv);
    } catch (const zr::tool::input_error& error) {
        std::fprintf(stderr, "%s\n", error.message.c_str());
        return error.code;
    } catch (const zr::tool::output_error& error) {
        std::fprintf(stderr, "%s\n", error.message.c_str());
        return zr::tool::exit_io;
    } catch (const std::bad_alloc&) {
        std::fputs("zrasn: memory is exhausted\n", stderr);
        return zr::tool::exit_io;
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::perror("standard output");
        return zr::tool::exit_io;
    }
    return code;
}
