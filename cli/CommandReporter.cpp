#include "cli/CommandReporter.h"

#include "cli/ConsoleReporter.h"
#include "cli/Heartbeat.h"
#include "cli/JsonReporter.h"
#include "cli/OutputFile.h"
#include "cli/Verbs.h"

namespace vornadel
{

namespace
{

std::unique_ptr<FlowReporter> shownBy(const Command& command)
{
    if (command.events != nullptr) {
        return std::make_unique<JsonReporter>(*command.events);
    }
    const std::string& how = command.line.progress;
    const bool bar = (how == "bar" || (how == "auto" && command.env.outIsTerminal)) &&
                     !outputIsStandard(command.line); // it would get into the file
    const bool none = how == "none" || command.line.quiet;
    return std::make_unique<ConsoleReporter>(command.out, command.err, command.rawOut,
                                             command.platform.clock,
                                             ConsoleReporter::Style{none  ? Progress::None
                                                                    : bar ? Progress::Bar
                                                                          : Progress::Plain,
                                                                    command.env.columns});
}

} // namespace

CommandReporter::CommandReporter(const Command& command)
    : m_command(command),
      m_shown(std::make_unique<Heartbeat>(shownBy(command), command.platform.clock))
{
}

void CommandReporter::started(const FlowStart& start)
{
    if (SleepInhibitor* const sleep = m_command.platform.sleep) {
        std::string problem;
        m_awake = sleep->hold("A hub is being worked on", problem);
        if (m_awake == nullptr) {
            m_command.log.note("the machine may go to sleep: " + problem);
        }
    }
    m_command.stop.enter(StopRequest::Phase::Unchanged);
    m_shown->started(start);
}

void CommandReporter::stepStarted(Step step)
{
    // A signal that came after the flow's last look at its stop flag has promised to stop it.
    const bool begins = (step == Step::Erase || step == Step::Restart) && !m_mustFinish;
    m_mustFinish = m_mustFinish || begins;
    const bool finishes = begins && m_command.stop.enter(StopRequest::Phase::Changing);
    if (step == Step::Erase) { // if the flow never reports its result
        m_command.result.flow = FlowResult{.changed = true, .flash = FlashState::Incomplete};
    }
    if (m_command.events != nullptr) { // otherwise its text is in the log
        m_command.log.note(std::string("step: ") + nameOf(step));
    }
    m_shown->stepStarted(step);
    if (finishes) {
        m_command.err << kFinishing << '\n' << std::flush;
    }
}

void CommandReporter::progressed(std::int32_t done, std::int32_t total)
{
    m_shown->progressed(done, total);
}

void CommandReporter::waiting(Clock::Duration sofar) { m_shown->waiting(sofar); }

void CommandReporter::finished(const FlowResult& result)
{
    m_result = result;
    m_command.result.flow = result;
    m_command.stop.enter(StopRequest::Phase::NoFlow);
    m_shown->finished(result);
}

void CommandReporter::closed()
{
    m_awake = nullptr;
    m_shown->closed();
}

} // namespace vornadel
