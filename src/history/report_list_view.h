#pragma once
// A list view in report mode: column headings, and rows of an item text with its sub-items
// beside it. Rows may exist before any column; cells past the columns are kept, not shown.
#include <QString>
#include <vector>

#include "app/control.h"

namespace zel {

struct ReportListView : Control {
    struct Column {
        QString text;
        double width = 0;  // twips
    };
    struct Item {
        QString text;
        std::vector<QString> sub_items;  // sub-item k at k - 1
    };
    // The width of a column added without one: room for a heading of some 18 letters.
    static constexpr double default_column_width = 1700;

    std::vector<Column> columns;
    std::vector<Item> items;

    // Positions from 1, as the control counts them.
    void add_item(int position, const QString& text);
    void add_sub_item(int item, int position, const QString& text);
    void add_column(int position, const QString& text, double width = default_column_width);
    int item_count() const { return static_cast<int>(items.size()); }
    int column_count() const { return static_cast<int>(columns.size()); }
    // Sub-item 0 is the item's text; an absent sub-item is empty.
    QString cell(int item, int sub_item) const;
};

}  // namespace zel
