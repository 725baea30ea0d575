#include "core/Url.h"

#include <cctype>

namespace tidemark {
namespace {

bool isAlpha(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isHex(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool isUnreserved(char c) {
  return isAlpha(c) || isDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}
bool isSubDelim(char c) {
  return c == '!' || c == '$' || c == '&' || c == '\'' || c == '(' || c == ')' || c == '*' ||
         c == '+' || c == ',' || c == ';' || c == '=';
}

// Every character is unreserved, a sub-delimiter, one of `extra`, or a valid %XX escape.
bool isValidComponent(std::string_view text, std::string_view extra) {
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '%') {
      if (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2])) return false;
      i += 2;
      continue;
    }
    if (!isUnreserved(c) && !isSubDelim(c) && extra.find(c) == std::string_view::npos) return false;
  }
  return true;
}

// ":port" or ":" or nothing after the host; the port stays unset when no digits are given.
bool takePort(std::string_view rest, Url& url) {
  if (rest.empty()) return true;
  if (rest[0] != ':') return false;
  const std::string_view digits = rest.substr(1);
  if (digits.size() > 5) return false;
  int port = 0;
  for (char c : digits) {
    if (!isDigit(c)) return false;
    port = port * 10 + (c - '0');
  }
  if (digits.empty()) return true;
  if (port > 65535) return false;
  url.port = port;
  return true;
}

// "[user@]host[:port]", the host a name or a bracketed IPv6 literal.
bool takeAuthority(std::string_view authority, Url& url) {
  if (size_t at = authority.rfind('@'); at != std::string_view::npos) {
    if (!isValidComponent(authority.substr(0, at), ":")) return false;
    url.hasUserInfo = true;
    authority = authority.substr(at + 1);
  }
  std::string_view host;
  if (authority.starts_with('[')) {
    const size_t close = authority.find(']');
    if (close == std::string_view::npos) return false;
    host = authority.substr(0, close + 1);
    authority = authority.substr(close + 1);
    for (char c : host.substr(1, host.size() - 2))
      if (!isHex(c) && c != ':' && c != '.') return false;
  } else {
    const size_t portColon = authority.find(':');
    host = authority.substr(0, portColon);
    authority =
        portColon == std::string_view::npos ? std::string_view{} : authority.substr(portColon);
    if (!isValidComponent(host, "")) return false;
  }
  if (!takePort(authority, url)) return false;
  url.host = std::string(host);
  return true;
}

// The scheme and what follows its colon; none when there is no valid scheme.
std::optional<std::string_view> takeScheme(std::string_view text, Url& url) {
  const size_t colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0 || !isAlpha(text[0])) return std::nullopt;
  for (char c : text.substr(1, colon - 1))
    if (!isAlpha(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
  url.scheme = std::string(text.substr(0, colon));
  return text.substr(colon + 1);
}

}  // namespace

std::optional<Url> parseUrl(std::string_view text) {
  Url url;
  const auto afterScheme = takeScheme(text, url);
  if (!afterScheme) return std::nullopt;
  std::string_view rest = *afterScheme;

  // Fragment and query come off the end first.
  if (size_t hash = rest.find('#'); hash != std::string_view::npos) {
    if (!isValidComponent(rest.substr(hash + 1), ":@/?")) return std::nullopt;
    rest = rest.substr(0, hash);
  }
  if (size_t question = rest.find('?'); question != std::string_view::npos) {
    std::string_view query = rest.substr(question + 1);
    if (!isValidComponent(query, ":@/?")) return std::nullopt;
    url.query = std::string(query);
    rest = rest.substr(0, question);
  }

  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const size_t slash = rest.find('/');
    if (!takeAuthority(rest.substr(0, slash), url)) return std::nullopt;
    rest = slash == std::string_view::npos ? std::string_view{} : rest.substr(slash);
  }
  if (!isValidComponent(rest, ":@/")) return std::nullopt;
  url.path = std::string(rest);
  return url;
}

}  // namespace tidemark
