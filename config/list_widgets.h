#pragma once

#include <QComboBox>
#include <QStringList>
#include <array>
#include <string_view>

#include "config/option_lists.h"

// Fills a drop-down list with one of the fixed lists in one step (one insertion, so
// the list lays out its entries once) and selects the entry a setting points at.
template <std::size_t N>
void fillList(QComboBox* list, const std::array<std::string_view, N>& entries, double option) {
    QStringList texts;
    texts.reserve(static_cast<qsizetype>(N));
    for (std::string_view entry : entries)
        texts << QString::fromUtf8(entry.data(), static_cast<qsizetype>(entry.size()));
    list->clear();
    list->addItems(texts);
    list->setCurrentIndex(listPosition(option, N));
}
