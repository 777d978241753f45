#include "KorvoGitService/RKTException.h"

RKTInvalidArgumentException::RKTInvalidArgumentException(const std::string& reason)
    : std::invalid_argument(reason) {}

// Out of line, so that the type's information stands in this library alone and a catch elsewhere
// finds it.
RKTInvalidArgumentException::RKTInvalidArgumentException(
    const RKTInvalidArgumentException&) noexcept = default;
RKTInvalidArgumentException& RKTInvalidArgumentException::operator=(
    const RKTInvalidArgumentException&) noexcept = default;
RKTInvalidArgumentException::~RKTInvalidArgumentException() = default;
