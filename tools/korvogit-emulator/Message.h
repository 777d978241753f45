#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace emulator {

/// True when both texts are equal but for the case of ASCII letters, as header names compare.
bool equalIgnoringCase(std::string_view left, std::string_view right);

/// With "%XX" decoded; what is no such escape stays as it is.
std::string percentDecoded(std::string_view text);

/// Header fields in the order and spelling in which they were received or will be sent.
class Headers {
public:
    using Field = std::pair<std::string, std::string>;

    Headers() = default;
    Headers(std::initializer_list<Field> fields) : fields_(fields) {}

    /// Appends a field, also when there is one of that name already.
    void add(std::string name, std::string value);
    /// Replaces every field of that name by this one.
    void set(std::string name, std::string value);
    void remove(std::string_view name);

    /// The first field of that name, in any case; nothing when there is none.
    std::optional<std::string> get(std::string_view name) const;
    /// All values of that name in their order.
    std::vector<std::string> all(std::string_view name) const;

    auto begin() const { return fields_.begin(); }
    auto end() const { return fields_.end(); }
    std::size_t size() const { return fields_.size(); }

private:
    std::vector<Field> fields_;
};

/// One item of a query or of a form body, percent-decoded, "+" read as a blank.
struct QueryItem {
    std::string name{};
    std::string value{};
    bool operator==(const QueryItem&) const = default;
};

/// Splits a query or form text at "&" and at the first "=" of each piece. Empty pieces are left
/// out.
std::vector<QueryItem> parseQuery(std::string_view text);

/// A request as it arrived. `method`, `target`, `path` and `query` are exactly the bytes sent.
struct Request {
    std::string method{};
    std::string target{};  ///< the whole request target of the request line
    std::string path{};    ///< the target up to "?", without scheme and host if it had them
    std::string query{};   ///< what follows "?", without it; empty when there is none
    std::string
        authority{};  ///< the Host field (or an absolute target's host), lower case, with port
    Headers headers{};
    std::string body{};            ///< decoded from chunks if it was sent so
    bool tls = false;              ///< arrived at the HTTPS listener
    std::string serverName{};      ///< the name asked for in the TLS handshake; empty without one
    bool resumed = false;          ///< the connection resumed a TLS session of an earlier one
    bool http10 = false;           ///< an HTTP/1.0 request
    bool keepAlive = true;         ///< the client lets the connection stand
    std::uint64_t connection = 0;  ///< the same for all requests of one connection; counts from 1
    std::uint64_t number = 0;      ///< counts all requests of the server from 1

    /// `authority` without the port.
    std::string host() const;
    /// "http://" or "https://" and the authority: where this request's client thinks it is.
    std::string origin() const;
    /// The last value of that query item; nothing when there is none.
    std::optional<std::string> queryValue(std::string_view name) const;
    std::vector<QueryItem> queryItems() const { return parseQuery(query); }
};

/// An answer that follows the rules of HTTP. For one that breaks them see `RawAnswer`.
///
/// "Date", "Content-Length" and, where due, "Connection: close" are added unless they are set here.
struct Answer {
    unsigned status = 200;
    std::string reason{};  ///< empty: the usual reason of that status
    Headers headers{};
    std::string body{};
    /// Compress the body with gzip when the client accepts that. Off, the body is sent verbatim.
    bool compressible = false;
    /// Off, the connection is closed after the answer.
    bool keepAlive = true;
};

/// An answer with a JSON body and its media type.
Answer jsonAnswer(unsigned status, std::string body);
/// An answer with a plain-text body and its media type.
Answer textAnswer(unsigned status, std::string body);

/// The usual reason of a status, "Unknown" for those without one.
std::string_view usualReason(unsigned status);

}  // namespace emulator
