// From a page to bare structs, by hand for this one service: no checks of types, no URLs, no dates.

#pragma once

#include <simdjson.h>

#include <cstdint>
#include <string>
#include <vector>

namespace floors {

/// What the library puts into a record of GitHub's, as plain members.
struct Repository {
    std::int64_t identifier = 0;
    std::int64_t ownerIdentifier = 0;
    std::int64_t forks = 0;
    std::int64_t stars = 0;
    bool archived = false;
    bool fork = false;
    std::string name;
    std::string fullName;
    std::string description;
    std::string ownerName;
    std::string visibility;
    std::string webURL;
    std::string SSHURL;
    std::string HTTPSURL;
    std::string defaultBranch;
};

/// One pass over each element's members, with a parser whose buffers are used again.
class PageReader {
public:
    std::vector<Repository> read(const simdjson::padded_string_view& text);

private:
    simdjson::dom::parser parser_;
};

}  // namespace floors
