// The URL string model: splitting a string into its components, and
// resolving a relative string against a base.
#include "CFURLInternal.h"

#include <vector>

namespace halvane::detail {

namespace {

bool isAlpha(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isSchemeCharacter(char c) {
    return isAlpha(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

// Collapses "." and ".." segments of a merged path. A ".." with nothing
// before it to collapse stays: "/b/c/" + "../../../g" gives "/../g", which
// is what files and links written by other software expect.
std::string removeDotSegments(std::string_view path) {
    bool absolute = !path.empty() && path[0] == '/';
    if (absolute) path.remove_prefix(1);
    std::vector<std::string_view> kept;
    bool trailingSlash = false;
    size_t start = 0;
    while (true) {
        size_t slash = path.find('/', start);
        bool last = slash == std::string_view::npos;
        std::string_view segment = path.substr(start, last ? std::string_view::npos : slash - start);
        if (segment == ".") {
            trailingSlash = last;
        } else if (segment == "..") {
            if (!kept.empty() && kept.back() != "..") {
                kept.pop_back();
                trailingSlash = last;
            } else {
                kept.push_back(segment);
            }
        } else {
            kept.push_back(segment);
            trailingSlash = false;
        }
        if (last) break;
        start = slash + 1;
    }
    std::string out = absolute ? "/" : "";
    for (size_t i = 0; i < kept.size(); ++i) {
        if (i > 0) out.push_back('/');
        out.append(kept[i]);
    }
    if (trailingSlash && !out.empty() && out.back() != '/') out.push_back('/');
    return out;
}

}  // namespace

URLParts parseURL(std::string_view text) {
    URLParts parts;
    size_t hash = text.find('#');
    size_t bodyEnd = hash == std::string_view::npos ? text.size() : hash;
    if (hash != std::string_view::npos) {
        parts.hasFragment = true;
        parts.fragment = {hash + 1, text.size() - hash - 1};
    }
    std::string_view body = text.substr(0, bodyEnd);

    size_t position = 0;
    if (!body.empty() && isAlpha(body[0])) {
        size_t end = 1;
        while (end < body.size() && isSchemeCharacter(body[end])) ++end;
        if (end < body.size() && body[end] == ':') {
            parts.hasScheme = true;
            parts.scheme = {0, end};
            position = end + 1;
            parts.specifier = {position, text.size() - position};
            parts.decomposable = position < body.size() && body[position] == '/';
        }
    }
    if (parts.decomposable && body.size() - position >= 2 && body[position] == '/' && body[position + 1] == '/') {
        size_t start = position + 2;
        size_t end = body.find_first_of("/?", start);
        if (end == std::string_view::npos) end = body.size();
        parts.hasNetLocation = true;
        parts.netLocation = {start, end - start};
        position = end;
    }
    size_t question = body.find('?', position);
    size_t pathEnd = question == std::string_view::npos ? body.size() : question;
    parts.path = {position, pathEnd - position};
    if (question != std::string_view::npos) {
        parts.hasQuery = true;
        parts.query = {question + 1, body.size() - question - 1};
    }
    return parts;
}

bool isDirectoryPath(std::string_view path) {
    if (path.empty()) return false;
    return path.back() == '/' || path == "." || path == ".." || path.ends_with("/.") || path.ends_with("/..");
}

std::string resolveURLText(std::string_view relative, const URLParts& rel, std::string_view base,
                           const URLParts& baseParts) {
    std::string out(baseParts.scheme.in(base));
    out.push_back(':');
    if (rel.hasNetLocation) {
        out.append(relative);
        return out;
    }
    if (baseParts.hasNetLocation) {
        out.append("//");
        out.append(baseParts.netLocation.in(base));
    }
    std::string_view basePath = baseParts.path.in(base);
    std::string_view relativePath = rel.path.in(relative);
    if (relativePath.empty()) {
        out.append(basePath);
        if (rel.hasQuery) {
            out.push_back('?');
            out.append(rel.query.in(relative));
        } else if (baseParts.hasQuery) {
            out.push_back('?');
            out.append(baseParts.query.in(base));
        }
    } else {
        if (relativePath[0] == '/') {
            out.append(relativePath);
        } else {
            std::string merged;
            if (baseParts.hasNetLocation && basePath.empty()) {
                merged = "/";
            } else {
                size_t slash = basePath.rfind('/');
                if (slash != std::string_view::npos) merged = basePath.substr(0, slash + 1);
            }
            merged.append(relativePath);
            out.append(removeDotSegments(merged));
        }
        if (rel.hasQuery) {
            out.push_back('?');
            out.append(rel.query.in(relative));
        }
    }
    if (rel.hasFragment) {
        out.push_back('#');
        out.append(rel.fragment.in(relative));
    }
    return out;
}

}  // namespace halvane::detail
