#pragma once

#include <expat.h>

#include <cstddef>
#include <exception>
#include <new>
#include <string>
#include <type_traits>

namespace znxml {

/// One Expat parser for one document. A subclass registers C handlers, which Expat calls with a
/// pointer to the object. Each handler calls a member function through `run`, because exceptions
/// must not propagate through Expat, which is C code.
class Expat {
public:
    Expat(Expat const&) = delete;
    Expat& operator=(Expat const&) = delete;

protected:
    Expat() : parser_(XML_ParserCreate(nullptr)) {
        if (!parser_)
            throw std::bad_alloc();
        XML_SetUserData(parser_, this);
    }
    ~Expat() { XML_ParserFree(parser_); }

    XML_Parser parser() const { return parser_; }

    /// Parses the document. Returns false if it is malformed or longer than `maxDocumentSize`, or
    /// if a handler called `stop`. Rethrows an exception of a handler. Throws std::bad_alloc if
    /// Expat runs out of memory.
    bool parse(std::string const& source);

    /// Ends the parsing. No other handler does anything after that.
    void stop() {
        stopped_ = true;
        XML_StopParser(parser_, XML_FALSE);
    }

    /// The source offset of the item (a tag, some text) that the running handler was called for.
    std::size_t position() const {
        return static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_));
    }
    /// The length of that item in the source.
    std::size_t length() const {
        return static_cast<std::size_t>(XML_GetCurrentByteCount(parser_));
    }

    /// For handlers: calls `operation` on the object that Expat's `void*` argument points to. If it
    /// throws, the parsing stops, and `parse` rethrows the exception. A no-op after `stop`.
    template <class Object, class... Parameters, class... Arguments>
    static void run(void* object, void (Object::*operation)(Parameters...),
                    Arguments... arguments) {
        auto& self = *static_cast<Object*>(static_cast<Expat*>(object));
        if (self.stopped_)
            return;
        try {
            (self.*operation)(arguments...);
        } catch (...) {
            self.failure_ = std::current_exception();
            self.stop();
        }
    }

private:
    XML_Parser parser_;
    bool stopped_ = false;
    std::exception_ptr failure_;
};

} // namespace znxml
