#pragma once

/// The emulator as a library, for tests of programs that talk to hosting services: everything is in
/// namespace `emulator`, and `Server` is where to begin. A GitHub answer comes at
/// `https://api.github.com` (map that host to `Server::httpsPort()`), a GitHub Enterprise one at
/// `Server::httpsURL() + "/api/v3/…"`, both with the accounts of `Accounts::demo()` unless others
/// are given. The other services and where they answer are listed in `HostingServices.h`. People
/// sign in with OAuth2 at `https://github.com` and `https://bitbucket.org`, for the applications of
/// `OAuthApplication::demo()`.
///
/// To make an answer, from most to least like the real one:
///   the service's own  nothing to do: accounts and restrictions are in Accounts.h
///   spoilt             Server::fault with one of faults:: (Faults.h)
///   verbatim           Server::script with an Answer (Message.h)
///   byte for byte      Server::script with a RawAnswer (RawAnswer.h)
/// and below HTTP: Server::disturb, Server::presentCertificate, ForwardProxy.

#include "Accounts.h"
#include "CertificateAuthority.h"
#include "Compression.h"
#include "Digest.h"
#include "Faults.h"
#include "ForwardProxy.h"
#include "Gate.h"
#include "Message.h"
#include "OAuthApplication.h"
#include "RawAnswer.h"
#include "Server.h"
