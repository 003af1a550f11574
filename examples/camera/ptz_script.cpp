// ptz_script.cpp - turns lines of text into command codes and parameter blocks.
//
// SPDX-License-Identifier: MIT
#include "ptz_script.hpp"

#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>

#include "run.hpp"

namespace camera {
namespace {

constexpr uint32_t kLongestWaitMs = 60000;

std::optional<uint32_t> mode_of(const std::string &word) {
    if (word == "to") return kModeTo;
    if (word == "by") return kModeBy;
    if (word == "speed") return kModeSpeed;
    return std::nullopt;
}

bool read_move(std::istream &words, ScriptStep *step) {
    std::string how;
    float pan = 0, tilt = 0;
    if (!(words >> how >> pan >> tilt) || !mode_of(how)) return false;
    step->code = kCommandMove;
    step->params.axes.first = {*mode_of(how), 0, pan};
    step->params.axes.second = {*mode_of(how), 0, tilt};
    return true;
}

bool read_zoom(std::istream &words, ScriptStep *step) {
    std::string how;
    float value = 0;
    if (!(words >> how >> value) || !mode_of(how)) return false;
    step->code = kCommandZoom;
    step->params.value = {*mode_of(how), 0, value};
    return true;
}

bool read_preset(std::istream &words, uint32_t operation, ScriptStep *step) {
    auto &block = step->params.index;
    step->code = kCommandPreset;
    block.operation = operation;
    if (!(words >> block.index)) return false;
    if (operation == kPresetRecall) return true;
    std::string name;
    return words >> name && zt_strncpy(block.name, name.c_str(), sizeof block.name) == 0;
}

bool read_restrict(std::istream &words, ScriptStep *step) {
    std::string how;
    if (!(words >> how) || (how != "on" && how != "off")) return false;
    step->code = kCommandRestrict;
    step->params.bytes[0] = how == "on" ? 1 : 0;
    return true;
}

bool read_step(const std::string &verb, std::istream &words, ScriptStep *step) {
    if (verb == "move") return read_move(words, step);
    if (verb == "zoom") return read_zoom(words, step);
    if (verb == "name") return read_preset(words, ZT_PTZ_INDEX_NAME, step);
    if (verb == "recall") return read_preset(words, kPresetRecall, step);
    if (verb == "restrict") return read_restrict(words, step);
    if (verb == "position") {
        step->code = kCommandPosition;
        return true;
    }
    return verb == "wait" && words >> step->wait_ms && step->wait_ms > 0 &&
           step->wait_ms <= kLongestWaitMs;
}

}  // namespace

std::vector<ScriptStep> read_script(const std::string &path) {
    std::ifstream file(path);
    if (!file) throw BadInput(path + ": cannot be read");
    std::vector<ScriptStep> steps;
    uint32_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        std::istringstream words(line.substr(0, line.find('#')));
        words.imbue(std::locale::classic());
        ScriptStep step;
        std::string verb, rest;
        if (!(words >> step.client)) continue;
        const std::string place = path + ", line " + std::to_string(number) + ": ";
        if (std::find(kClients.begin(), kClients.end(), step.client) == kClients.end()) {
            throw BadInput(place + "no client is called \"" + step.client + "\"");
        }
        words >> verb;
        if (!read_step(verb, words, &step) || words >> rest) {
            throw BadInput(place + "\"" + verb + "\" is not understood");
        }
        const size_t start = line.find(verb, line.find(step.client) + step.client.size());
        step.text = line.substr(start, line.find('#') - start);
        step.text.erase(step.text.find_last_not_of(" \t\r") + 1);
        steps.push_back(step);
    }
    return steps;
}

}  // namespace camera
