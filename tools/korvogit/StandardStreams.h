#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korvogit {

/// Occupies descriptors 0 to 2 where the caller closed them, so that no socket gets one of them and
/// receives our output. Writing to such a one fails.
void occupyStandardDescriptors();

/// Standard output could not be written. what() is a sentence for a person, empty when whoever read
/// it went away, as `head` does.
class OutputError : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

/// Writes all of it to standard output, at once.
/// @throws OutputError
void writeOutput(std::string_view text);

/// Reads standard input until a line has ended, more than `longest` bytes have come, or it ends.
/// What came behind the line in one piece with it is there too.
/// @param unless a descriptor that ends it as soon as it is readable; negative: none
std::string readLine(std::size_t longest, int unless = -1);

/// Writes "korvogit: " and the sentence to standard error, and under it what else there is to say,
/// a line each. Empty lines are left out.
void complain(std::string_view sentence, const std::vector<std::string>& below = {});

/// Writes advice to standard error, for a person only: nothing when that is no terminal.
void hint(std::string_view sentence);

/// Writes as it stands to standard error and does not care whether that works.
void writeError(std::string_view text);

}  // namespace korvogit
