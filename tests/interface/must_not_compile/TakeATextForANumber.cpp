// A text is a pointer, and a pointer is true: the number of a page would be 1.
// Refused with: (no matching function|no viable conversion|could not convert|cannot convert)

#include "KorvoGitService/RKTServiceRequest.h"

void use(RKTServiceRequest& request) {
#ifdef MISUSE
    request.setPage("3");
#else
    request.setPage(3);
#endif
}
