#include "history/report_list_view.h"

#include <algorithm>

namespace zel {

namespace {

// The place of a new entry at `position` from 1, kept within what the list holds.
template <class T>
typename std::vector<T>::iterator insertion(std::vector<T>& entries, int position) {
    const auto at = std::clamp<long>(position - 1, 0, static_cast<long>(entries.size()));
    return entries.begin() + at;
}

}  // namespace

void ReportListView::add_item(int position, const QString& text) {
    items.insert(insertion(items, position), Item{text, {}});
}

void ReportListView::add_sub_item(int item, int position, const QString& text) {
    if (item < 1 || item > item_count() || position < 1) return;
    std::vector<QString>& cells = items[item - 1].sub_items;
    if (static_cast<int>(cells.size()) < position) cells.resize(position);
    cells[position - 1] = text;
}

void ReportListView::add_column(int position, const QString& text, double width) {
    columns.insert(insertion(columns, position), Column{text, width});
}

QString ReportListView::cell(int item, int sub_item) const {
    if (item < 1 || item > item_count()) return {};
    const Item& row = items[item - 1];
    if (sub_item == 0) return row.text;
    if (sub_item < 0 || sub_item > static_cast<int>(row.sub_items.size())) return {};
    return row.sub_items[sub_item - 1];
}

}  // namespace zel
