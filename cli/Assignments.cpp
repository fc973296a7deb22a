#include "Assignments.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <numeric>

namespace {

bool looksLikeAName(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0;
    });
}

std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = std::tolower(static_cast<unsigned char>(a[i - 1])) ==
                              std::tolower(static_cast<unsigned char>(b[j - 1]));
            const std::size_t replaced = diagonal + (same ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

}  // namespace

FilesAndAssignments splitWords(const std::vector<std::string>& words,
                               const std::function<bool(const std::string&)>& isName) {
    FilesAndAssignments out;
    for (const std::string& word : words) {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        std::error_code ignored;
        const bool isFile = equals == std::string::npos || std::filesystem::exists(word, ignored);
        if (!isFile && isName(name)) {
            out.assignments.emplace_back(name, word.substr(equals + 1));
        } else if (!isFile && looksLikeAName(name)) {
            throw UsageError(name);
        } else if (!out.assignments.empty()) {
            throw UsageError(word);
        } else {
            out.files.push_back(word);
        }
    }
    return out;
}

std::string closestName(const std::string& mistyped, const std::vector<std::string>& names) {
    std::string closest;
    std::size_t best =
        std::max<std::size_t>(mistyped.size() / 3, 2) + 1;  // two letters swapped are still close
    for (const std::string& name : names) {
        const std::size_t distance = editDistance(mistyped, name);
        if (distance < best) {
            best = distance;
            closest = name;
        }
    }
    return closest;
}
