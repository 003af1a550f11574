// options.cpp - the command line.
//
// SPDX-License-Identifier: MIT
#include "options.hpp"

#include <filesystem>

namespace camera {
namespace {

uint32_t number(const std::string &option, const std::string &text, uint32_t least, uint32_t most) {
    char *end = nullptr;
    const int64_t value = zt_strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || value < least || value > most) {
        throw BadInput(option + " wants a number from " + std::to_string(least) + " to " +
                       std::to_string(most) + ", not \"" + text + "\"");
    }
    return static_cast<uint32_t>(value);
}

std::string thread_name(const std::string &option, const std::string &name) {
    if (is_thread_name(name)) return name;
    std::string known = std::string(kCapture) + " " + kEncoder + " " + kPtzDriver;
    for (const char *client : kClients) known += std::string(" ") + client;
    throw BadInput(option + ": no thread is called \"" + name + "\", only " + known);
}

// A file of ours: in the working directory, or else beside the program.
std::string default_file(const char *name) {
    std::error_code ignored;
    if (std::filesystem::exists(name, ignored)) return name;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return ignored ? name : (program.parent_path() / name).string();
}

}  // namespace

const char *const kUsage =
    "usage: camera [options]\n"
    "  --config FILE      configuration (camera.ini in the working directory or beside the "
    "program)\n"
    "  --ptz FILE         what the PTZ clients do (ptz.txt, found in the same way)\n"
    "  --frames FILE      raw video to play, over and over, instead of the test pattern\n"
    "  --report FILE      writes what happened as JSON\n"
    "  --seconds N        how long to run, 1 to 86400 (5)\n"
    "  --slow-encoder MS  time that the encoder wastes after each frame, up to 60000\n"
    "  --stall THREAD     this thread stops working; the watchdog notices\n"
    "  --crash THREAD     this thread crashes; the crash report shows where\n"
    "THREAD is capture, encoder, ptz-driver, operator, tracker or service.\n"
    "Exit status: 0 when everything is accounted for, 1 when not, 2 for bad usage or "
    "configuration.\n";

Options parse_options(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--help") {
            options.help = true;
            return options;
        }
        const std::string value = i + 1 < argc ? argv[i + 1] : "";
        if (option == "--config")
            options.config = value;
        else if (option == "--ptz")
            options.ptz = value;
        else if (option == "--frames")
            options.frames = value;
        else if (option == "--report")
            options.report = value;
        else if (option == "--seconds")
            options.seconds = number(option, value, 1, 86400);
        else if (option == "--slow-encoder")
            options.slow_encoder_ms = number(option, value, 0, 60000);
        else if (option == "--stall")
            options.fault.stall = thread_name(option, value);
        else if (option == "--crash")
            options.fault.crash = thread_name(option, value);
        else
            throw BadInput("unknown option " + option);
        if (value.empty()) throw BadInput(option + " wants a value");
    }
    if (options.config.empty()) options.config = default_file("camera.ini");
    if (options.ptz.empty()) options.ptz = default_file("ptz.txt");
    return options;
}

}  // namespace camera
