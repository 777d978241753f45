// Mistakes in the calling program, each text once.

#ifndef KORVOGITSERVICE_CORE_MISUSE_H
#define KORVOGITSERVICE_CORE_MISUSE_H

#include <string_view>

namespace rkt {

/// @param operation  the keyword name of the operation that was called, colons included
/// @throws RKTInvalidArgumentException  "%@ must be overridden by subclasses."
[[noreturn]] void raiseMustBeOverridden(std::string_view operation);

/// @throws RKTInvalidArgumentException  "%@ should only be invoked on a concrete service subclass."
[[noreturn]] void raiseNeedsConcreteSubclass(std::string_view operation);

/// @throws RKTInvalidArgumentException  "Must be initialized using -%@"
[[noreturn]] void raiseMustBeInitializedUsing(std::string_view initializer);

}  // namespace rkt

#endif
