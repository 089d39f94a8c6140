#include "cli/OutputFile.h"

#include "base/WholeFile.h"
#include "cli/Verbs.h"

#include <filesystem>

namespace vornadel
{

bool isStandardOutput(const std::string& path) { return path == "-"; }

bool outputIsStandard(const CommandLine& line)
{
    const auto output = line.verb->output;
    return output != nullptr && isStandardOutput(line.*output);
}

int checkOutput(const Command& command, const std::string& path, const std::string& intro)
{
    namespace fs = std::filesystem;
    if (isStandardOutput(path)) {
        return kExitSuccess;
    }
    std::error_code ignored;
    const fs::file_status found = fs::symlink_status(path, ignored);
    if (!command.line.force && (fs::is_regular_file(found) || fs::is_symlink(found))) {
        return fail(command, FailureId::FileExists,
                    intro + path + " exists, and is not replaced without --force");
    }
    std::string problem;
    return canBeSaved(path, problem) ? kExitSuccess
                                     : fail(command, FailureId::FileNotSaved, intro + problem);
}

bool writeOutput(const Command& command, const std::string& path,
                 std::span<const std::uint8_t> bytes, std::string& problem)
{
    if (!isStandardOutput(path)) {
        return command.line.force ? saveWholeFile(path, bytes, problem)
                                  : saveNewFile(path, bytes, problem);
    }
    command.rawOut.write(reinterpret_cast<const char*>(bytes.data()),
                         static_cast<std::streamsize>(bytes.size()));
    if (!command.rawOut.flush()) {
        problem = "standard output cannot be written";
    }
    return problem.empty();
}

} // namespace vornadel
