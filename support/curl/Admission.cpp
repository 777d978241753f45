#include "support/curl/Admission.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace rkt {
namespace {

constexpr auto kinds = {Admission::Kind::Shares, Admission::Kind::Alone};

constexpr std::size_t index(Admission::Kind kind) {
    return static_cast<std::size_t>(kind);
}

}  // namespace

bool Admission::Peer::mayAdmit(Kind kind, std::size_t maximumConnections) const {
    const auto sharingToBegin = toBegin[index(Kind::Shares)];
    if (kind == Kind::Shares && multiplexes) return true;
    if (kind == Kind::Shares && !isKnown && sharingToBegin > 0) return false;
    const auto connections =
        underWay.size() + toBegin[index(Kind::Alone)] + (multiplexes ? 0 : sharingToBegin);
    return maximumConnections == 0 || connections < maximumConnections;
}

void Admission::Peer::release(const Connection& connection) {
    const auto found = underWay.find(connection);
    if (--found->second == 0) underWay.erase(found);
}

void Admission::enter(Token token, const std::string& peer, Kind kind) {
    auto& named = *peers_.try_emplace(peer).first;
    named.second.waiting[index(kind)].insert(token);
    transfers_.emplace(token, Transfer{&named, kind});
    changed_.insert(&named);
}

void Admission::began(Token token, const Connection& connection) {
    auto& transfer = transfers_.at(token);
    auto& peer = transfer.peer->second;
    if (transfer.place == Transfer::Place::UnderWay) {
        peer.release(transfer.connection);
    } else {
        --peer.toBegin[index(transfer.kind)];
    }
    transfer.place = Transfer::Place::UnderWay;
    transfer.connection = connection;
    peer.isKnown = true;
    if (++peer.underWay[connection] > 1) peer.multiplexes = true;
    changed_.insert(transfer.peer);
}

void Admission::leave(Token token) {
    const auto found = transfers_.find(token);
    if (found == transfers_.end()) return;
    const auto& transfer = found->second;
    auto& peer = transfer.peer->second;
    switch (transfer.place) {
        case Transfer::Place::Waiting:
            peer.waiting[index(transfer.kind)].erase(token);
            break;
        case Transfer::Place::ToBegin:
            --peer.toBegin[index(transfer.kind)];
            break;
        case Transfer::Place::UnderWay:
            peer.release(transfer.connection);
            break;
    }
    changed_.insert(transfer.peer);
    transfers_.erase(found);
}

std::vector<Loader::Token> Admission::admit(std::size_t maximumConnections) {
    if (std::exchange(maximumConnections_, maximumConnections) != maximumConnections) {
        for (auto& named : peers_) changed_.insert(&named);
    }
    std::vector<Token> admitted;
    for (auto* const named : std::exchange(changed_, {})) {
        auto& peer = named->second;
        const auto isIdle = [&] {
            return peer.underWay.empty() && !peer.toBegin[0] && !peer.toBegin[1];
        };
        // What it could do may be over with its connections.
        if (isIdle()) peer.isKnown = peer.multiplexes = false;
        admitOf(peer, maximumConnections, admitted);
        if (isIdle()) peers_.erase(named->first);
    }
    return admitted;
}

void Admission::admitOf(Peer& peer, std::size_t maximumConnections, std::vector<Token>& admitted) {
    for (;;) {
        std::optional<Token> next;
        for (const auto kind : kinds) {
            const auto& waiting = peer.waiting[index(kind)];
            if (waiting.empty() || !peer.mayAdmit(kind, maximumConnections)) continue;
            next = std::min(next.value_or(*waiting.begin()), *waiting.begin());
        }
        if (!next) return;
        auto& transfer = transfers_.at(*next);
        transfer.place = Transfer::Place::ToBegin;
        peer.waiting[index(transfer.kind)].erase(*next);
        ++peer.toBegin[index(transfer.kind)];
        admitted.push_back(*next);
    }
}

}  // namespace rkt
