#include "stores/xdg_comment.h"

#include "platform/code_page.h"
#include "platform/xattr.h"

namespace {

// Every CR LF, lone CR or LF becomes `lineBreak`.
std::string withBreaks(std::string_view text, std::string_view lineBreak) {
    std::string out;
    out.reserve(text.size() + text.size() / 16);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' && text[i] != '\n') {
            out += text[i];
            continue;
        }
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            ++i;
        out += lineBreak;
    }
    return out;
}

// The comment as file managers keep it: LF breaks, none at the end.
std::string commentValue(std::string_view description) {
    std::string value = withBreaks(description, "\n");
    value.erase(value.find_last_not_of('\n') + 1);
    return value;
}

}  // namespace

std::optional<std::string> readXdgComment(const std::string& target) {
    std::string bytes;
    if (readStream(target, kXdgCommentStream, bytes) != StreamStatus::Ok)
        return std::nullopt;
    return commentText(bytes);
}

std::optional<std::string> commentText(std::string_view bytes) {
    if (bytes.empty())
        return std::nullopt;
    return withBreaks(decodeFileText(bytes), "\r\n");
}

void updateXdgComment(const std::string& target, std::string_view description) {
    const std::string value = commentValue(description);
    if (value.empty() || replaceStream(target, kXdgCommentStream, value) != StreamStatus::Ok)
        (void)removeStream(target, kXdgCommentStream);
}

bool commentDiffers(std::string_view description, std::string_view comment) {
    return commentValue(description) != commentValue(comment);
}
