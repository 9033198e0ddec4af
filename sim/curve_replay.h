#pragma once
// A curve file that the console recorded, played back as the simulated patient's breathing:
// one sample per frame at the file's own frame rate, looping at its end, so that the gating
// chain can be rehearsed with a real patient's breathing.
#include <memory>
#include <string>
#include <vector>

namespace zelsim {

class CurveReplay {
  public:
    // The file's volumes, or nothing with the reason in `error`.
    static std::shared_ptr<const CurveReplay> load(const std::string& path, std::string& error);

    // The volume in litres `seconds` after the start, between samples on a straight line,
    // from the start again after the last sample.
    double volume_at(double seconds) const;
    double length_seconds() const { return static_cast<double>(litres.size()) / frame_rate; }
    std::size_t samples() const { return litres.size(); }
    double frame_rate = 50.0;
    std::vector<double> litres;
};

}  // namespace zelsim
