#pragma once

#include "flows/FlowReporter.h"

#include <gtest/gtest.h>

#include <vector>

namespace vornadel::test
{

/// Records the values that a flow reports, and checks their order.
class ToldValues final : public FlowReporter
{
public:
    void started(const FlowStart& /*start*/) override
    {
        ++starts;
        EXPECT_TRUE(steps.empty());
    }
    void stepStarted(Step step) override
    {
        EXPECT_EQ(starts, 1);
        EXPECT_EQ(m_done, m_total) << "the step before is not done";
        m_done = m_total = 0;
        steps.push_back(step);
    }
    void progressed(std::int32_t done, std::int32_t total) override
    {
        EXPECT_GT(done, m_done);
        EXPECT_LE(done, total);
        m_done = done;
        m_total = total;
    }
    void finished(const FlowResult& told) override
    {
        EXPECT_EQ(ends, 0);
        result = told;
    }
    void closed() override { ++ends; }

    int starts = 0;
    std::vector<Step> steps;
    FlowResult result;
    int ends = 0;

private:
    std::int32_t m_done = 0; // of the step
    std::int32_t m_total = 0;
};

} // namespace vornadel::test
