// A repository record as texts, and what a service's element should become.

#pragma once

#include <map>
#include <string>

#include "KorvoGitService/RKTServiceRepository.h"
#include "fuzz/common/PlainJSON.h"

namespace fuzz {

/// The properties that are set, by name.
using Properties = std::map<std::string, std::string, std::less<>>;

Properties propertiesOf(const RKTServiceRepository& repository);

/// What the services' tables say, element by element.
Properties expectedOfGitHub(const plain::JSON& element);
Properties expectedOfGitLab(const plain::JSON& element);
Properties expectedOfBitbucket(const plain::JSON& element);
Properties expectedOfBitbucketServer(const plain::JSON& element);

}  // namespace fuzz
