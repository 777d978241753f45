// Which transfers go to libcurl, and which wait for their turn.

#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "support/session/Loader.h"

namespace rkt {

/// A queue for each peer, in front of libcurl, which is given what it can begin at once and nothing
/// else: its own queue wakes one transfer at a time and can forget to
/// (docs/decisions/0004-loading.md).
///
/// - To a peer without a transfer goes one: its connection tells what the peer can do.
/// - Once that has begun, as many go as there may be connections.
/// - Once two are under way on one connection, as in HTTP/2 alone, all go that can share one.
///
/// What needs a connection of its own waits for nothing but the number of connections.
class Admission {
public:
    using Token = Loader::Token;
    enum class Kind { Shares, Alone };
    /// The peer's address and the port on this side, which tell connections apart.
    using Connection = std::pair<std::string, int>;

    /// @param peer  a server and the way to it: what connections are limited for, and shared by
    void enter(Token token, const std::string& peer, Kind kind);
    /// An admitted transfer has its connection, or another than before.
    void began(Token token, const Connection& connection);
    /// Forgets a transfer, admitted or not.
    void leave(Token token);

    /// Those that may go now.
    /// @param maximumConnections  to one peer; 0: any number
    std::vector<Token> admit(std::size_t maximumConnections);

private:
    struct Peer {
        std::set<Token> waiting[2];                  // by kind, in the order of their coming
        std::size_t toBegin[2] = {};                 // by kind: admitted, without a connection yet
        std::map<Connection, std::size_t> underWay;  // how many on each
        bool isKnown = false;                        // one has begun since the peer was idle
        bool multiplexes = false;

        bool mayAdmit(Kind kind, std::size_t maximumConnections) const;
        void release(const Connection& connection);
    };
    using Peers = std::unordered_map<std::string, Peer>;
    struct Transfer {
        Peers::pointer peer;
        Kind kind;
        enum class Place { Waiting, ToBegin, UnderWay } place = Place::Waiting;
        Connection connection{};
    };

    void admitOf(Peer& peer, std::size_t maximumConnections, std::vector<Token>& admitted);

    Peers peers_;
    std::unordered_map<Token, Transfer> transfers_;
    std::size_t maximumConnections_ = 0;  // of the last time
    std::set<Peers::pointer> changed_;    // where some may have got their turn
};

}  // namespace rkt
