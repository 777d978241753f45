// Misuse of the interface.

#ifndef KORVOGITSERVICE_RKTEXCEPTION_H
#define KORVOGITSERVICE_RKTEXCEPTION_H

#include <stdexcept>
#include <string>

#include "KorvoGitService/RKTExport.h"

/// Thrown for a mistake in the calling program, never for what a network, a service or a user does
/// (those are RKTError values). what() is one of four fixed reasons, filled in with the operation's
/// keyword name where it has one: "Must be initialized using -initWithServiceType:credentialType:",
/// "Must be initialized using -initWithCredentials:",
/// "%@ must be overridden by subclasses." and "%@ should only be invoked on a concrete service
/// subclass."
class RKT_EXPORT RKTInvalidArgumentException : public std::invalid_argument {
public:
    /// Thrown by the library; an adapter of one's own may throw it for its callers' mistakes.
    explicit RKTInvalidArgumentException(const std::string& reason);
    /// Copying never throws, as an exception that is being handled requires.
    RKTInvalidArgumentException(const RKTInvalidArgumentException&) noexcept;
    /// As the copy constructor.
    RKTInvalidArgumentException& operator=(const RKTInvalidArgumentException&) noexcept;
    ~RKTInvalidArgumentException() override;
};

#endif
