#include "cli/Failures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using Row = std::pair<std::string, std::string>;

TEST(Messages, AreThoseInTheDocumentation)
{
    std::vector<Row> documented;
    std::ifstream page(MESSAGES_PAGE);
    for (std::string line; std::getline(page, line);) {
        std::smatch cells;
        if (std::regex_match(line, cells, std::regex(R"(\| `([a-z-]+)` \| ([0-9]+) \| .+ \|)"))) {
            documented.emplace_back(cells[1], cells[2]);
        }
    }
    std::vector<Row> known;
    for (const FailureKind& kind : allFailureKinds()) {
        known.emplace_back(kind.name, std::to_string(kind.status));
    }
    EXPECT_THAT(documented, testing::UnorderedElementsAreArray(known));
}

} // namespace

} // namespace vornadel::test
