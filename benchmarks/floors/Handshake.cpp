// The first request to each of several origins over bare OpenSSL: the store of authorities is
// loaded once, then each origin costs a look-up, a connection, a handshake and one HTTP/1.1
// exchange.

#include <netdb.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <sstream>

#include "benchmarks/common/Client.h"

namespace {

SSL_CTX* contextWithStore(const std::string& authorities) {
    SSL_CTX* context = SSL_CTX_new(TLS_client_method());
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    if (SSL_CTX_load_verify_file(context, authorities.c_str()) != 1) {
        bench::fail("no certificate authorities in " + authorities);
    }
    return context;
}

int connectTo(const std::string& port) {
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo("localhost", port.c_str(), &wanted, &found) != 0) {
        bench::fail("the floor found no address");
    }
    const int descriptor = socket(found->ai_family, found->ai_socktype, found->ai_protocol);
    const int connected = connect(descriptor, found->ai_addr, found->ai_addrlen);
    freeaddrinfo(found);
    if (connected != 0) bench::fail("the floor could not connect");
    return descriptor;
}

std::size_t request(SSL_CTX* context, const std::string& port, const std::string& path) {
    SSL* connection = SSL_new(context);
    SSL_set_tlsext_host_name(connection, "localhost");
    SSL_set1_host(connection, "localhost");
    const int descriptor = connectTo(port);
    SSL_set_fd(connection, descriptor);
    if (SSL_connect(connection) != 1) bench::fail("the floor's handshake failed");
    const std::string text = "GET " + path +
                             " HTTP/1.1\r\nHost: localhost\r\nUser-Agent: floor\r\n"
                             "Connection: close\r\n\r\n";
    SSL_write(connection, text.data(), static_cast<int>(text.size()));
    std::size_t size = 0;
    char buffer[16384];
    for (int read = 0; (read = SSL_read(connection, buffer, sizeof buffer)) > 0;) {
        size += static_cast<std::size_t>(read);
    }
    SSL_free(connection);
    close(descriptor);
    return size;
}

}  // namespace

int main(int count, char** words) {
    const bench::Arguments arguments(count, words);
    SSL_CTX* context = contextWithStore(arguments.text("ca"));
    std::vector<double> clock;
    std::vector<double> processor;
    std::istringstream ports(arguments.text("ports"));
    for (std::string port; std::getline(ports, port, ',');) {
        const auto before = bench::Moment::now();
        const auto size = request(context, port, arguments.text("path"));
        const auto after = bench::Moment::now();
        if (size < 1024) bench::fail("the floor's answer is short");
        clock.push_back(after.clock - before.clock);
        processor.push_back(after.processor - before.processor);
    }
    // The very first also loads what OpenSSL loads late.
    clock.erase(clock.begin());
    processor.erase(processor.begin());
    bench::print({{"wall_us", bench::percentile(clock, 0.5)},
                  {"cpu_us", bench::percentile(processor, 0.5)}});
    SSL_CTX_free(context);
}
