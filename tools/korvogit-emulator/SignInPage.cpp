#include "SignInPage.h"

namespace emulator {

namespace {

constexpr std::string_view style = R"(
:root { color-scheme: light dark; --ink: #1f2933; --paper: #f4f6f8; --card: #ffffff;
  --line: #d8dee4; --go: #1a7f4b; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e6edf3; --paper: #12161b; --card: #1c232b; --line: #38434f; --go: #2a9d63; } }
body { margin: 0; min-height: 100vh; display: grid; place-items: center; background: var(--paper);
  color: var(--ink); font: 16px/1.5 system-ui, sans-serif; }
main { width: min(26rem, 90vw); margin: 2rem 0; padding: 2rem; background: var(--card);
  border: 1px solid var(--line); border-radius: 12px; box-sizing: border-box; }
h1 { margin: 0 0 1rem; font-size: 1.25rem; }
select, button { width: 100%; padding: .6rem; font: inherit; border-radius: 8px;
  border: 1px solid var(--line); background: var(--card); color: var(--ink); }
.choices { display: flex; gap: .75rem; margin-top: 1.5rem; }
button { cursor: pointer; }
#allow { background: var(--go); border-color: var(--go); color: #fff; }
:focus-visible { outline: 3px solid #6ea8fe; outline-offset: 2px; }
small { display: block; margin-top: 1.5rem; opacity: .7; }
)";

std::string escaped(std::string_view text) {
    std::string html;
    for (const char c : text) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            default:
                html += c;
        }
    }
    return html;
}

Answer page(unsigned status, std::string_view title, const std::string& content) {
    Answer answer;
    answer.status = status;
    answer.headers.add("Content-Type", "text/html; charset=utf-8");
    answer.headers.add("Cache-Control", "no-store");
    answer.headers.add("Referrer-Policy", "no-referrer");
    answer.headers.add("Content-Security-Policy",
                       "default-src 'none'; style-src 'unsafe-inline'; frame-ancestors 'none'");
    answer.body =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<title>" +
        escaped(title) + "</title>\n<style>" + std::string(style) +
        "</style>\n</head>\n<body>\n<main>\n" + content +
        "<small>This page is an emulation for tests; no hosting service is involved."
        "</small>\n</main>\n</body>\n</html>\n";
    return answer;
}

}  // namespace

Answer SignInPage::answer() const {
    std::string content = "<h1>" + escaped(application) + " wants to use your " + escaped(service) +
                          " account</h1>\n";
    if (!scopes.empty()) {
        content += "<p>It asks for:</p>\n<ul>\n";
        for (const auto& scope : scopes) {
            content += "<li><code>" + escaped(scope) + "</code></li>\n";
        }
        content += "</ul>\n";
    }
    content +=
        "<form method=\"post\">\n<label for=\"login\">Account</label>\n"
        "<select id=\"login\" name=\"login\">\n";
    for (const auto& login : logins) {
        content += std::string("<option") + (login == suggestedLogin ? " selected" : "") + ">" +
                   escaped(login) + "</option>\n";
    }
    content +=
        "</select>\n<div class=\"choices\">\n"
        "<button id=\"deny\" name=\"decision\" value=\"deny\">Deny</button>\n"
        "<button id=\"allow\" name=\"decision\" value=\"allow\">Allow</button>\n"
        "</div>\n</form>\n";
    return page(200, "Sign in to " + service, content);
}

Answer signInProblem(unsigned status, std::string_view service, std::string_view sentence) {
    return page(status, service,
                "<h1>" + escaped(service) + "</h1>\n<p>" + escaped(sentence) + "</p>\n");
}

}  // namespace emulator
