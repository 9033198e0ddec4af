#include "app/proportional_layout.h"

namespace zel {

void ProportionalLayout::record(const std::vector<Control*>& controls, double inner_width,
                                double inner_height) {
    kept.clear();
    for (const Control* c : controls)
        kept.push_back({static_cast<float>(c->Left), static_cast<float>(c->Top),
                        static_cast<float>(c->Width), static_cast<float>(c->Height),
                        static_cast<float>(c->font.size)});
    kept_width = inner_width;
    kept_height = inner_height;
}

void ProportionalLayout::scale(const std::vector<Control*>& controls, double inner_width,
                               double inner_height, const Control* system_height) const {
    if (kept.empty() || kept_width <= 0 || kept_height <= 0) return;
    const double xs = inner_width / kept_width;
    const double ys = inner_height / kept_height;
    for (size_t k = 0; k < controls.size() && k < kept.size(); ++k) {
        Control& c = *controls[k];
        const auto& place = kept[k];
        c.Left = xs * place[0];
        c.Top = ys * place[1];
        c.Width = xs * place[2];
        if (&c != system_height) c.Height = ys * place[3];
    }
}

}  // namespace zel
