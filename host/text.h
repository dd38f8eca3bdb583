// Text for and from people: numbers, lists, and the names nearest to a misspelt one.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The whole text as a finite number, independent of the locale.
std::optional<double> parseNumber(std::string_view text);
// The shortest text that reads back as the same number.
std::string formatNumber(double number);

std::vector<std::string> split(std::string_view text, char separator);
std::string join(const std::vector<std::string>& words, const std::string& separator = ", ");
std::string lower(std::string text); // ASCII letters only

// The candidates most like a name, best first; none when nothing is like it.
std::vector<std::string> nearest(const std::string& name, const std::vector<std::string>& candidates);
// "; did you mean A or B?", or nothing when no candidate is near.
std::string suggestion(const std::string& name, const std::vector<std::string>& candidates);

} // namespace host
