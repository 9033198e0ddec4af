#include "curve_replay.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace zelsim {

namespace {

// Lines of the header before the first sample.
constexpr int header_lines = 26;

// A number as the console writes it: blanks around it, the machine's separator, point or comma.
bool parse_number(std::string text, double& value) {
    const auto first = text.find_first_not_of(' ');
    const auto last = text.find_last_not_of(' ');
    if (first == std::string::npos) return false;
    text = text.substr(first, last - first + 1);
    for (char& c : text)
        if (c == ',') c = '.';
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size() && std::isfinite(value);
}

std::string without_cr(std::string line) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

}  // namespace

std::shared_ptr<const CurveReplay> CurveReplay::load(const std::string& path, std::string& error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = path + ": cannot be opened";
        return nullptr;
    }
    auto curve = std::make_shared<CurveReplay>();
    std::string line;
    bool rate_found = false;
    for (int n = 1; n <= header_lines; ++n) {
        if (!std::getline(in, line)) {
            error = path + ": not a recorded curve (its header ends at line " + std::to_string(n) + ")";
            return nullptr;
        }
        line = without_cr(line);
        const std::string label = "Count Frequency:";
        if (line.rfind(label, 0) == 0) {
            rate_found = parse_number(line.substr(label.size()), curve->frame_rate) &&
                         curve->frame_rate >= 1 && curve->frame_rate <= 1000;
        }
    }
    if (!rate_found) {
        error = path + ": not a recorded curve (no frame rate in its header)";
        return nullptr;
    }
    for (int n = header_lines + 1; std::getline(in, line); ++n) {
        line = without_cr(line);
        if (line.empty()) continue;
        std::istringstream fields(line);
        std::string time, volume;
        double value = 0;
        if (!std::getline(fields, time, ';') || !std::getline(fields, volume, ';') ||
            !parse_number(volume, value)) {
            error = path + ":" + std::to_string(n) + ": not a sample line";
            return nullptr;
        }
        curve->litres.push_back(value);
    }
    if (curve->litres.size() < 2) {
        error = path + ": fewer than two samples";
        return nullptr;
    }
    return curve;
}

double CurveReplay::volume_at(double seconds) const {
    const double n = static_cast<double>(litres.size());
    double position = std::fmod(seconds * frame_rate, n);
    if (position < 0) position += n;
    const auto k = static_cast<std::size_t>(position);
    const double part = position - static_cast<double>(k);
    // After the last sample the line runs back to the first, where the loop begins again.
    const double next = litres[(k + 1) % litres.size()];
    return litres[k] + (next - litres[k]) * part;
}

}  // namespace zelsim
