#include "Platform/Recognition/PageLayout.h"

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace orvane::platform::recognition {

namespace {

constexpr double widestLetter = 0.3; ///< shares of the picture's sides
constexpr double highestLetter = 0.3;
constexpr int lowestLetter = 8; ///< pixels; lower letters cannot be read
/// A rule is longer than this share of the width, and this many times longer than wide.
constexpr double shortestRule = 0.05;
constexpr int ruleAspect = 8;
constexpr double leastCellFill = 0.45; ///< of its box; a long cell of a board held at an angle fills half
constexpr double smallestCell = 0.001, largestCell = 0.4; ///< shares of the picture
/// More than this is texture. A slate has some twenty cells and some two hundred letters.
constexpr std::size_t mostCells = 60;
constexpr std::size_t mostLetters = 500;
/// The least share of letter shapes that are in rows, if there is text and no texture.
constexpr double leastInRows = 0.65;
constexpr std::size_t fewestOfTexture = 120;
/// A picture with at least this many letters in at least this many cells shows a form; unframed shapes are
/// its surroundings.
constexpr int fewestFormLetters = 8;
constexpr std::size_t fewestFormCells = 3;
constexpr int shortestRow = 3; ///< letters beside each other, if no cell shows that they are text

using Component = Components::Component;

bool isRuling(const Component& component, const Mask& ink) {
    const int width = component.box.width(), height = component.box.height();
    if (width > widestLetter * ink.width || height > highestLetter * ink.height) return true;
    const int length = std::max(width, height), thickness = std::min(width, height);
    return length > shortestRule * ink.width && length > ruleAspect * thickness;
}

bool isLetter(const Component& component) {
    constexpr double leastFill = 0.12;
    constexpr double widest = 4; // times its height: letters that touch
    const Box& box = component.box;
    return box.height() >= lowestLetter && box.width() >= 2 && box.width() <= widest * box.height() &&
           component.pixels > leastFill * box.area();
}

/// Finds the cells that the rules enclose. The rules may have small gaps.
void findCells(const Components& components, const std::vector<bool>& isRule, Page& page) {
    constexpr int bridged = 2; // pixels; half of the widest gap in a rule
    const int width = page.letters.width, height = page.letters.height;
    Mask open(width, height, 1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::int32_t label = components.labels.at(x, y);
            if (label < 0 || !isRule[static_cast<std::size_t>(label)]) continue;
            for (int dy = std::max(y - bridged, 0); dy <= std::min(y + bridged, height - 1); ++dy)
                for (int dx = std::max(x - bridged, 0); dx <= std::min(x + bridged, width - 1); ++dx)
                    open.at(dx, dy) = 0;
        }
    const Components spaces = componentsOf(open, Neighbours::four);
    const double area = static_cast<double>(width) * height;
    std::vector<std::int32_t> places(spaces.list.size(), -1);
    for (std::size_t i = 0; i < spaces.list.size(); ++i) {
        const Component& space = spaces.list[i];
        const Box& box = space.box;
        const bool touchesEdge =
            box.left <= 1 || box.top <= 1 || box.right >= width - 1 || box.bottom >= height - 1;
        if (touchesEdge || space.pixels < smallestCell * area || space.pixels > largestCell * area ||
            space.pixels < leastCellFill * box.area() || box.height() < 2 * lowestLetter)
            continue;
        places[i] = static_cast<std::int32_t>(page.cellBoxes.size());
        page.cellBoxes.push_back(box);
    }
    if (page.cellBoxes.size() > mostCells) {
        page.cellBoxes.clear();
        return;
    }
    for (std::size_t i = 0; i < spaces.labels.values.size(); ++i)
        if (const std::int32_t label = spaces.labels.values[i]; label >= 0)
            page.cells.values[i] = places[static_cast<std::size_t>(label)];
}

bool areHorizontalNeighbours(const Box& a, const Box& b) {
    constexpr double similar = 1.7; // times the height
    const int low = std::min(a.height(), b.height()), high = std::max(a.height(), b.height());
    return high <= similar * low && a.overlapDown(b) * 2 > low && a.overlapAcross(b) > -low &&
           a.overlapAcross(b) * 2 < std::min(a.width(), b.width());
}

/// For each letter, the number of letters in its row.
std::vector<int> rowLengths(const std::vector<Box>& letters) {
    std::vector<std::size_t> order(letters.size()), parents(letters.size());
    for (std::size_t i = 0; i < letters.size(); ++i) order[i] = parents[i] = i;
    std::ranges::sort(order, {}, [&](std::size_t i) { return letters[i].left; });
    const auto root = [&](std::size_t i) {
        while (parents[i] != i) i = parents[i] = parents[parents[i]];
        return i;
    };
    int widest = 0;
    for (const Box& box : letters) widest = std::max(widest, box.width() + box.height());
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t j = i + 1; j < order.size(); ++j) {
            const Box &a = letters[order[i]], &b = letters[order[j]];
            if (b.left - a.left > widest) break;
            if (areHorizontalNeighbours(a, b)) parents[root(order[i])] = root(order[j]);
        }
    std::vector<int> members(letters.size(), 0), lengths(letters.size(), 0);
    for (std::size_t i = 0; i < letters.size(); ++i) ++members[root(i)];
    for (std::size_t i = 0; i < letters.size(); ++i) lengths[i] = members[root(i)];
    return lengths;
}

/// Short rows in line with a longer one: a value of one or two letters at some distance after its label, or
/// after a colon, whose dots are no letters.
std::vector<bool> completesRow(const std::vector<Box>& letters, const std::vector<int>& lengths) {
    constexpr double widestGap = 12, mostOffLine = 0.25; // times the height
    std::vector<bool> result(letters.size(), false);
    for (std::size_t i = 0; i < letters.size(); ++i) {
        if (lengths[i] >= shortestRow) continue;
        for (std::size_t j = 0; j < letters.size() && !result[i]; ++j) {
            const Box &own = letters[i], &other = letters[j];
            const int height = std::max(own.height(), other.height());
            result[i] = lengths[j] >= shortestRow &&
                        std::abs(own.height() - other.height()) <= mostOffLine * height &&
                        std::abs(own.bottom - other.bottom) <= mostOffLine * height &&
                        -own.overlapAcross(other) <= widestGap * height;
        }
    }
    return result;
}

bool overlapsRow(const Box& row, const Box& box) {
    return row.overlapDown(box) * 2 > std::min(row.height(), box.height());
}

/// Boxes in reading order: rows from the top, each from left to right.
template <class Item>
std::vector<std::vector<Item>> rowsOf(std::vector<Item> items) {
    std::ranges::stable_sort(items, {}, [](const Item& item) { return item.box.top + item.box.bottom; });
    std::vector<std::vector<Item>> rows;
    for (Item& item : items) {
        const bool isNew = rows.empty() || !overlapsRow(rows.back().front().box, item.box);
        if (isNew) rows.emplace_back();
        rows.back().push_back(std::move(item));
    }
    for (auto& row : rows) std::ranges::stable_sort(row, {}, [](const Item& item) { return item.box.left; });
    return rows;
}

Line lineOf(const std::vector<Word>& words) {
    Line line{{}, words.front().box, 0};
    for (const Word& word : words) {
        if (!line.text.empty()) line.text += ' ';
        line.text += word.text;
        line.box = line.box.joined(word.box);
        line.confidence += word.confidence / static_cast<double>(words.size());
    }
    return line;
}

} // namespace

std::int32_t Page::cellAt(const Box& box) const {
    return cells.at(std::clamp((box.left + box.right) / 2, 0, cells.width - 1),
                    std::clamp((box.top + box.bottom) / 2, 0, cells.height - 1));
}

Page pageOf(const Mask& ink) {
    const Components components = componentsOf(ink, Neighbours::eight);
    Page page{{ink.width, ink.height}, 0, 0, {ink.width, ink.height, -1}, {}, {}, {}, 0};
    std::vector<bool> isRule(components.list.size());
    for (std::size_t i = 0; i < components.list.size(); ++i) isRule[i] = isRuling(components.list[i], ink);
    if (std::ranges::none_of(components.list, isLetter)) return page;
    findCells(components, isRule, page);

    std::vector<std::size_t> letters, framed;
    std::vector<Box> unframedBoxes;
    std::vector<std::size_t> unframed;
    std::set<std::int32_t> usedCells;
    for (std::size_t i = 0; i < components.list.size(); ++i) {
        const Component& component = components.list[i];
        const std::int32_t cell = page.cellAt(component.box);
        if (isRule[i] || !isLetter(component)) continue;
        if (cell >= 0) {
            framed.push_back(i);
            usedCells.insert(cell);
        } else {
            unframed.push_back(i);
            unframedBoxes.push_back(component.box);
        }
    }
    letters = framed;
    if (static_cast<int>(framed.size()) < fewestFormLetters || usedCells.size() < fewestFormCells) {
        std::vector<std::size_t> inRows, others;
        const std::vector<int> lengths = rowLengths(unframedBoxes);
        const std::vector<bool> completes = completesRow(unframedBoxes, lengths);
        for (std::size_t i = 0; i < unframed.size(); ++i)
            if (lengths[i] >= shortestRow)
                inRows.push_back(unframed[i]);
            else if (completes[i])
                others.push_back(unframed[i]);
        const bool isTexture =
            unframed.size() > fewestOfTexture &&
            static_cast<double>(inRows.size()) < leastInRows * static_cast<double>(unframed.size());
        if (!isTexture) {
            letters.insert(letters.end(), inRows.begin(), inRows.end());
            letters.insert(letters.end(), others.begin(), others.end());
        }
    }
    if (letters.empty() || letters.size() > mostLetters) return page;

    page.letterCount = static_cast<int>(letters.size());
    page.framedLetterCount = static_cast<int>(framed.size());
    std::vector<bool> isKept(components.list.size());
    std::vector<int> heights;
    page.extent = components.list[letters.front()].box;
    for (const std::size_t i : letters) {
        page.letterBoxes.push_back(components.list[i].box);
        isKept[i] = true;
        page.extent = page.extent.joined(components.list[i].box);
        heights.push_back(components.list[i].box.height());
    }
    const auto quarter = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 4);
    std::ranges::nth_element(heights, quarter);
    page.smallLetterHeight = *quarter;
    for (std::size_t i = 0; i < components.labels.values.size(); ++i) {
        const std::int32_t label = components.labels.values[i];
        if (label >= 0 && isKept[static_cast<std::size_t>(label)]) page.letters.values[i] = 1;
    }
    return page;
}

namespace {

using Words = std::vector<Word>;

bool isLabelOf(const Line& label, const Line& value) {
    constexpr double larger = 1.3; // times the height
    return value.box.height() > larger * label.box.height();
}
bool isOneWordWithoutDigit(const Words& words) {
    return words.size() == 1 && words.front().text.find_first_of("0123456789") == std::string::npos;
}

/// Whether a label is above its value: it is one word, or in smaller type.
bool isLabelled(const std::vector<Words>& rows) {
    constexpr std::size_t mostRows = 3;
    if (rows.size() < 2 || rows.size() > mostRows) return false;
    return isLabelOf(lineOf(rows[0]), lineOf(rows[1])) || isOneWordWithoutDigit(rows[0]);
}

/// Groups of words of a row that are beside each other.
std::vector<Words> groupsOf(const Words& row) {
    constexpr double widestGap = 2; // times the height of the words
    std::vector<Words> groups;
    for (const Word& word : row) {
        const Box* before = groups.empty() ? nullptr : &groups.back().back().box;
        const bool isFar = before == nullptr || word.box.left - before->right >
                                                    widestGap * std::min(word.box.height(), before->height());
        if (isFar) groups.emplace_back();
        groups.back().push_back(word);
    }
    return groups;
}

/// A row of labels in small type above a row of values, on a board without cells: each value belongs to the
/// last label that begins to its left, if that has no other value.
void joinValues(std::vector<Words>& labels, std::vector<Words>& values) {
    constexpr double furthest = 1.5; // times the height of the value
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (!isOneWordWithoutDigit(labels[i])) continue;
        const Line label = lineOf(labels[i]);
        const int end = i + 1 < labels.size() ? labels[i + 1].front().box.left : INT_MAX;
        const auto isBelow = [&](const Words& words) {
            const Line value = lineOf(words);
            return value.box.left >= label.box.left && value.box.left < end && isLabelOf(label, value) &&
                   value.box.top - label.box.bottom < furthest * value.box.height();
        };
        const auto value = std::ranges::find_if(values, isBelow);
        if (value == values.end() || std::find_if(value + 1, values.end(), isBelow) != values.end()) continue;
        labels[i].insert(labels[i].end(), value->begin(), value->end());
        values.erase(value);
    }
}

/// Texture is often read as short words, and as longer ones with little confidence.
bool isBelievable(const Line& line, const std::vector<Word>& words) {
    constexpr std::size_t shortestWord = 3; // bytes
    constexpr double leastConfidence = 0.8;
    return line.confidence >= leastConfidence && std::ranges::any_of(words, [](const Word& word) {
               return word.text.size() >= shortestWord && word.confidence >= leastConfidence;
           });
}

} // namespace

std::vector<Line> linesOf(std::vector<Word> words, const Page& page) {
    std::map<std::int32_t, Words> byCell;
    for (Word& word : words) byCell[page.cellAt(word.box)].push_back(std::move(word));
    std::vector<Line> lines;
    for (auto& [cell, members] : byCell) {
        const auto rows = rowsOf(std::move(members));
        std::vector<std::vector<Words>> groups;
        if (cell >= 0 && (rows.size() == 1 || isLabelled(rows))) {
            groups.push_back({{}});
            for (const Words& row : rows) std::ranges::copy(row, std::back_inserter(groups.back().back()));
        } else {
            for (const Words& row : rows) groups.push_back(groupsOf(row));
            for (std::size_t i = 0; i + 1 < groups.size(); ++i) joinValues(groups[i], groups[i + 1]);
        }
        for (const auto& row : groups)
            for (const Words& together : row)
                if (Line line = lineOf(together); cell >= 0 || isBelievable(line, together))
                    lines.push_back(std::move(line));
    }
    std::vector<Line> ordered;
    for (auto& row : rowsOf(std::move(lines))) std::ranges::move(row, std::back_inserter(ordered));
    return ordered;
}

} // namespace orvane::platform::recognition
