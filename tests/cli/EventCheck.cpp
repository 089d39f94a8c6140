#include "tests/cli/EventCheck.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/utils/nlohmann_json_utils.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#include <set>
#include <sstream>

namespace vornadel::test
{

namespace
{

using valijson::adapters::NlohmannJsonAdapter;

const valijson::Schema& eventSchema()
{
    static const valijson::Schema* const schema = [] {
        nlohmann::json document;
        EXPECT_TRUE(valijson::utils::loadDocument(EVENTS_SCHEMA, document));
        auto* const made = new valijson::Schema; // lives as long as the program
        valijson::SchemaParser().populateSchema(NlohmannJsonAdapter(document), *made);
        return made;
    }();
    return *schema;
}

/// Whether an event that differs from this one only in time has been checked before. The validator
/// takes a while.
bool isKnownToFit(nlohmann::json event)
{
    static std::set<std::string> known;
    for (const char* const key : {"time", "job", "seq", "ms"}) {
        event.erase(key);
    }
    return !known.insert(event.dump()).second;
}

std::string whyUnfit(const std::string& line)
{
    const nlohmann::json event = nlohmann::json::parse(line, nullptr, false);
    if (event.is_discarded()) {
        return "no JSON";
    }
    if (isKnownToFit(event)) {
        return {};
    }
    valijson::Validator validator;
    valijson::ValidationResults results;
    if (validator.validate(eventSchema(), NlohmannJsonAdapter(event), &results)) {
        return {};
    }
    std::string why;
    for (const valijson::ValidationResults::Error& error : results) {
        why += error.description + '\n';
    }
    return why;
}

} // namespace

std::vector<Json> checkedEvents(const std::string& output)
{
    std::vector<Json> events;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const std::string why = whyUnfit(line);
        EXPECT_EQ(why, "") << line;
        if (!why.empty()) {
            return {};
        }
        events.push_back(Json::parse(line));
        EXPECT_EQ(events.back()["seq"], events.size() - 1) << line;
        EXPECT_EQ(events.back()["job"], events.front()["job"]) << line;
        EXPECT_EQ(events.back()["event"] == "start", events.size() == 1) << line;
    }
    for (const Json& event : events) {
        EXPECT_EQ(event["event"] == "result", &event == &events.back()) << output;
    }
    EXPECT_FALSE(events.empty());
    return events;
}

} // namespace vornadel::test
