#include "cli/HelpText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>

namespace vornadel
{

namespace
{

constexpr std::size_t kColumns = 80;
constexpr std::size_t kTextColumn = 28;

constexpr struct {
    int status;
    const char* text;
} kExitTexts[] = {
    {0, "done, or already so"},
    {1, "failed for a reason that has no status of its own"},
    {2, "wrong command line or configuration"},
    {3, "no hub, or none that is selected"},
    {4, "several hubs, and none is chosen"},
    {5, "no permission to open the hub"},
    {6, "the image was refused"},
    {7, "a transfer failed, or the hub did not restart"},
    {8, "the flash, or an image, differs from what it should be"},
    {9, "done and checked, but the hub did not come back as it should"},
    {10, "would have asked"},
    {11, "another program has the hub"},
    {12, "some of several failed"},
};

class HelpFormatter final : public CLI::Formatter
{
public:
    HelpFormatter()
    {
        label("SUBCOMMAND", "VERB");
        label("Positionals", "Operands");
    }

    std::string make_option(const CLI::Option* option, bool isPositional) const override
    {
        return entry(make_option_name(option, isPositional) + make_option_opts(option),
                     make_option_desc(option));
    }
    std::string make_option_opts(const CLI::Option* option) const override
    {
        if (!option->get_positional()) {
            return Formatter::make_option_opts(option);
        }
        return option->get_expected_max() > 1 ? "..." : "";
    }
    std::string make_subcommand(const CLI::App* verb) const override
    {
        return entry(verb->get_name(), verb->get_description());
    }
    std::string make_description(const CLI::App* app) const override
    {
        return wrappedText(app->get_description(), 0, 0) + "\n\n";
    }

private:
    static std::string entry(const std::string& name, const std::string& text)
    {
        std::string line = "  " + name;
        const bool fits = line.size() + 2 <= kTextColumn;
        line += fits ? std::string(kTextColumn - line.size(), ' ')
                     : '\n' + std::string(kTextColumn, ' ');
        return line + wrappedText(text, kTextColumn, kTextColumn) + '\n';
    }
};

} // namespace

std::shared_ptr<CLI::FormatterBase> helpFormatter() { return std::make_shared<HelpFormatter>(); }

std::string wrappedText(const std::string& text, std::size_t indent, std::size_t used)
{
    std::istringstream words(text);
    std::string wrapped;
    std::size_t column = used;
    for (std::string word; words >> word;) {
        if (wrapped.empty()) {
            wrapped = word;
        } else if (column + 1 + word.size() > kColumns) {
            wrapped += '\n' + std::string(indent, ' ') + word;
            column = indent;
        } else {
            wrapped += ' ' + word;
            ++column;
        }
        column += word.size();
    }
    return wrapped;
}

std::string exitStatusText()
{
    std::string text;
    for (const auto& each : kExitTexts) {
        const std::string number = std::to_string(each.status);
        text += std::string(4 - number.size(), ' ') + number + "  " + each.text + '\n';
    }
    return text + "  129, 130, 143  stopped by SIGHUP, SIGINT or SIGTERM\n";
}

std::string nearestWord(std::string_view word, const std::vector<std::string>& candidates)
{
    const auto distance = [word](const std::string& other) {
        // Row i, column j: from the first i letters of `word` to the first j of `other`.
        std::vector<std::vector<std::size_t>> cost(word.size() + 1,
                                                   std::vector<std::size_t>(other.size() + 1));
        for (std::size_t i = 0; i <= word.size(); ++i) {
            for (std::size_t j = 0; j <= other.size(); ++j) {
                if (i == 0 || j == 0) {
                    cost[i][j] = i + j;
                    continue;
                }
                const std::size_t replaced = word[i - 1] == other[j - 1] ? 0 : 1;
                cost[i][j] = std::min(
                    {cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + replaced});
                if (i > 1 && j > 1 && word[i - 1] == other[j - 2] && word[i - 2] == other[j - 1]) {
                    cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
                }
            }
        }
        return cost[word.size()][other.size()];
    };
    const auto nearest =
        std::min_element(candidates.begin(), candidates.end(),
                         [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
    return nearest == candidates.end() ? std::string() : *nearest;
}

} // namespace vornadel
