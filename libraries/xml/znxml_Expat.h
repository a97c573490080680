#pragma once

#include <expat.h>

#include <cstddef>
#include <exception>
#include <new>
#include <string>
#include <type_traits>

namespace znxml {

/// One run of Expat over one document. Subclasses set handlers that get the object back and do
/// their work through `run`: no exception crosses Expat, which is C.
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

    /// Whether the document is well-formed and no handler stopped. Throws what a handler threw, and
    /// std::bad_alloc.
    bool parse(std::string const& source);

    /// Ends the parsing; no handler runs any more.
    void stop() {
        stopped_ = true;
        XML_StopParser(parser_, XML_FALSE);
    }

    /// The position in the source of what a handler is called for, and its length.
    std::size_t position() const {
        return static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_));
    }
    std::size_t length() const {
        return static_cast<std::size_t>(XML_GetCurrentByteCount(parser_));
    }

    /// What a handler does: calls the object's operation.
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
