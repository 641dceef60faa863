#pragma once

#include "CleanerCore/Support/Json.h"
#include "terminal/Console.h"

#include <string>
#include <string_view>

namespace loftmere {

// A JSON document that is printed while it is made, so that no more than one of its values is held at a
// time. It reads like a document that was printed whole: indented by two, and no terminal can be led astray
// by it. Text that is not valid UTF-8 is repaired. `key` is empty for elements of an array and for the
// outermost value; otherwise it is printed as it stands.
class JsonOutput {
public:
    explicit JsonOutput(Console& console) : console_(console) {}

    void beginObject(std::string_view key = {}) { begin(key, '{'); }
    void beginArray(std::string_view key = {}) { begin(key, '['); }

    // A whole value, of any size.
    void value(const Json& value, std::string_view key = {});

    // Ends the innermost object or array that is still open; the line after the outermost one.
    void end();

private:
    void begin(std::string_view key, char bracket);
    void startValue(std::string_view key);
    std::string newLine() const;

    Console& console_;
    std::string open_;    // the brackets that are still open
    bool isEmpty_ = true; // nothing stands in the innermost one
};

} // namespace loftmere
