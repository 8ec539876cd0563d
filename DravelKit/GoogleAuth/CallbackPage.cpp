#include "DravelKit/GoogleAuth/CallbackPage.h"

#include "DravelKit/Foundation/Text.h"

#include <string_view>

namespace dravel::CallbackPage {

namespace {

constexpr std::string_view style = R"css(
:root { color-scheme: light dark;
  --bg: #f5f5f5; --card: #ffffff; --text: #131927; --muted: #394050; --line: #d4d7dd;
  --ok: #2f7a45; --ok-soft: #c5e9cd; --ko: #c0392f; --ko-soft: #fac5c3; }
@media (prefers-color-scheme: dark) { :root {
  --bg: #131927; --card: #1e2436; --text: #f5f5f5; --muted: #c2c7d0; --line: #2c3346;
  --ok: #43b75d; --ok-soft: #173524; --ko: #f26b66; --ko-soft: #3a1c19; } }
* { box-sizing: border-box; margin: 0; }
body { min-height: 100vh; display: grid; place-items: center; padding: 24px; background: var(--bg); color: var(--text);
  font: 15px/1.5 "Atkinson Hyperlegible Next", system-ui, sans-serif; }
main { width: 100%; max-width: 400px; padding: 40px 32px 28px; text-align: center; background: var(--card);
  border: 1px solid var(--line); border-radius: 20px; overflow-wrap: anywhere;
  box-shadow: 0 1px 2px rgb(0 0 0 / .06), 0 12px 32px rgb(0 0 0 / .08);
  animation: rise .45s cubic-bezier(.2, .8, .2, 1) both; }
.badge { width: 64px; height: 64px; margin: 0 auto 20px; border-radius: 50%; display: grid; place-items: center; }
.ok .badge { background: var(--ok-soft); color: var(--ok); }
.ko .badge { background: var(--ko-soft); color: var(--ko); }
.badge svg { width: 40px; height: 40px; fill: none; stroke: currentColor; stroke-width: 3.2; stroke-linecap: round;
  stroke-linejoin: round; }
.draw { stroke-dasharray: 32; stroke-dashoffset: 32; animation: draw .5s .25s ease-out forwards; }
h1 { font-size: 22px; font-weight: 650; line-height: 1.25; margin-bottom: 8px; }
p { color: var(--muted); text-wrap: balance; }
code { font: .92em ui-monospace, monospace; }
footer { margin-top: 28px; padding-top: 16px; border-top: 1px solid var(--line); display: flex; flex-wrap: wrap;
  gap: 4px 12px; font-size: 12px; color: var(--muted); }
footer span { margin: 0 auto; }
.app { display: inline-flex; align-items: center; gap: 6px; }
.app svg { width: 16px; height: 16px; }
@keyframes rise { from { opacity: 0; transform: translateY(12px); } }
@keyframes draw { to { stroke-dashoffset: 0; } }
@media (prefers-reduced-motion: reduce) { main, .draw { animation: none; } .draw { stroke-dashoffset: 0; } }
)css";

constexpr std::string_view checkMark = R"(<path class="draw" d="M14 25.5l7 7L34 18"/>)";
constexpr std::string_view exclamationMark =
    R"(<path d="M24 14v13"/><circle cx="24" cy="33.5" r="1.6" fill="currentColor" stroke="none"/>)";

struct Content {
    std::string_view variant, heading, mark;
    std::string message; // HTML
};

std::string escaped(std::string_view text) {
    auto html = replacedAll(text, "&", "&amp;");
    html = replacedAll(html, "<", "&lt;");
    html = replacedAll(html, ">", "&gt;");
    return replacedAll(html, "\"", "&quot;");
}

std::string document(const Content& content, const GoogleConfig& config) {
    const auto name = escaped(config.appName);
    std::string html = "<!DOCTYPE html>\n<html lang=\"fr\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>";
    html.append(name).append(" · ").append(content.heading).append("</title>\n<style>").append(style);
    html.append("</style>\n</head>\n<body>\n<main class=\"").append(content.variant);
    html.append(
        "\">\n<div class=\"badge\"><svg viewBox=\"0 0 48 48\" width=\"48\" height=\"48\" aria-hidden=\"true\">");
    html.append(content.mark).append("</svg></div>\n<h1>").append(content.heading).append("</h1>\n<p>");
    html.append(content.message).append("</p>\n<footer><span class=\"app\">");
    html.append("<svg viewBox=\"0 0 16 16\" width=\"16\" height=\"16\" aria-hidden=\"true\">").append(config.icon);
    html.append("</svg>").append(name).append(", par Dravel</span>");
    html.append("<span>Vous pouvez fermer cet onglet.</span></footer>\n</main>\n</body>\n</html>\n");
    return html;
}

std::string reason(const std::string& error, const GoogleConfig& config) {
    if (error == "access_denied") return "Vous avez refusé l'accès à votre agenda.";
    if (error == "admin_policy_enforced" || error == "org_internal")
        return "L'administrateur Google Workspace de votre organisation bloque les apps tierces : "
               "demandez-lui d'autoriser " +
               escaped(config.appName) + ".";
    return "Google a répondu : <code>" + escaped(error) + "</code>.";
}

}

std::string success(const GoogleConfig& config) {
    return document(
        {.variant = "ok", .heading = "C'est connecté", .mark = checkMark, .message = escaped(config.connectedText)},
        config);
}

std::string failure(const std::string& error, const GoogleConfig& config) {
    return document({.variant = "ko",
                     .heading = "Connexion annulée",
                     .mark = exclamationMark,
                     .message = reason(error, config) + " Relancez « Se connecter à Google… » depuis " +
                                escaped(config.retryPlace) + " quand vous voulez."},
                    config);
}

}
