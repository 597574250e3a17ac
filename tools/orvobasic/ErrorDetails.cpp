#include "ErrorDetails.h"

#include <string>

namespace ob::runner {

namespace {

// "    " then the line's own blanks and tabs up to `column`, so the marker
// lines up under tabs too, then "^" and "~" over the rest of the subject.
std::string Marker(const std::string& line, int column, size_t width) {
    std::string marker = "    ";
    for (int i = 0; i + 1 < column && static_cast<size_t>(i) < line.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(line[static_cast<size_t>(i)]);
        if ((c & 0xC0) == 0x80) continue;   // a UTF-8 continuation byte takes no column of its own
        marker += c == '\t' ? '\t' : ' ';
    }
    marker += '^';
    if (width > 1) marker.append(width - 1, '~');
    return marker;
}

// What the error is about, said the way its number means it.
std::string AboutLine(const ob::ErrorRecord& r) {
    std::string subject = r.subject.ToUtf8();
    std::string line;
    switch (r.id) {
    case 37: line = "\"" + subject + "\" is not defined"; break;
    case 21: line = "no function \"" + subject + "\""; break;
    case 7: line = "no label \"" + subject + "\""; break;
    default: line = "\"" + subject + "\""; break;
    }
    if (!r.osReason.empty()) line += ": " + r.osReason.ToUtf8();
    if (!r.suggestion.empty()) line += "; did you mean \"" + r.suggestion.ToUtf8() + "\"?";
    return line;
}

}  // namespace

void PrintErrorDetails(std::FILE* out, const ob::ErrorRecord& r) {
    if (r.line <= 0) {
        if (!r.subject.empty()) std::fprintf(out, "    %s\n", AboutLine(r).c_str());
        return;
    }
    std::string source = r.sourceLine.ToUtf8();
    bool located = r.subjectColumn > 0;
    std::string marker = Marker(source, located ? r.subjectColumn : r.column,
                                located ? r.subject.ToUtf8().size() : 1);
    std::fprintf(out, "%s\n", marker.c_str());
    if (!r.subject.empty()) std::fprintf(out, "    %s\n", AboutLine(r).c_str());
    if (!r.hint.empty()) std::fprintf(out, "    hint: %s\n", r.hint.ToUtf8().c_str());
}

}  // namespace ob::runner
