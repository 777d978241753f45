#include "LoginPage.h"

namespace korvogit {

namespace {

constexpr std::string_view style = R"(
:root { color-scheme: light dark; --ink: #24292f; --paper: #f6f7f9; --card: #fff; --line: #d9dee4;
  --good: #1a7f37; --bad: #b42318; }
@media (prefers-color-scheme: dark) { :root { --ink: #e6e9ed; --paper: #14181d; --card: #1d2329;
  --line: #3a444e; --good: #4ac26b; --bad: #ff8577; } }
body { margin: 0; min-height: 100vh; display: grid; place-items: center; background: var(--paper);
  color: var(--ink); font: 1rem/1.5 system-ui, sans-serif; }
main { max-width: 28rem; margin: 1.5rem; padding: 2rem; background: var(--card);
  border: 1px solid var(--line); border-radius: .75rem; overflow-wrap: anywhere; }
h1 { margin: 0 0 .5rem; font-size: 1.3rem; }
.good { color: var(--good); } .bad { color: var(--bad); }
p { margin: .5rem 0 0; }
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
            default:
                html += c;
        }
    }
    return html;
}

}  // namespace

std::string loginPage(bool worked, std::string_view serviceName, std::string_view sentence) {
    const std::string title =
        (worked ? "Signed in to " : "Not signed in to ") + std::string(serviceName);
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           escaped(title) + "</title>\n<style>" + std::string(style) +
           "</style>\n</head>\n<body>\n<main role=\"status\">\n<h1 class=\"" +
           (worked ? "good" : "bad") + "\">" + (worked ? "✓ " : "✗ ") + escaped(title) +
           "</h1>\n<p>" + escaped(sentence) +
           "</p>\n<p>You may close this page.</p>\n</main>\n</body>\n</html>\n";
}

}  // namespace korvogit
