// Not every text is a URL, so a text never turns into one unasked.
// Refused with: (no matching function|no viable conversion|could not convert|cannot convert)

#include <string>

#include "KorvoGitService/RKTServiceCredentials.h"

void use(RKTServiceCredentials& credentials, const std::string& text) {
#ifdef MISUSE
    credentials.setURL(text);
#else
    credentials.setURL(RKTURL::URLWithString(text));
#endif
}
