#include "host/formats/xml.h"

#include "host/input/file_pieces.h"
#include "host/input/utf8.h"

#ifdef VORN_EXPAT
#include <expat.h>
#include <iconv.h>
#endif

#include <cstdint>
#include <exception>
#include <memory>
#include <new>

namespace vornhost {

const XmlAttribute *XmlElement::find(std::string_view attribute) const
{
    for (const XmlAttribute &candidate : attributes)
        if (candidate.name == attribute) return &candidate;
    return nullptr;
}

Source XmlElement::place(size_t offset) const
{
    if (marks.empty()) return at;
    size_t i = 0;
    while (i + 1 < marks.size() && marks[i + 1].offset <= offset) i++;
    Source found = marks[i].at;
    const std::string_view before = std::string_view(text).substr(marks[i].offset, offset - marks[i].offset);
    found.column += (int)utf8_count(before);
    return found;
}

#ifdef VORN_EXPAT

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool is_blank(std::string_view text)
{
    for (const char c : text)
        if (!is_blank(c)) return false;
    return true;
}

// Whether the ampersand at offset begins a character reference or one of the five entities of XML.
bool is_plain_reference(std::string_view text, size_t offset)
{
    const std::string_view rest = text.substr(offset);
    for (const std::string_view known : {"&#", "&amp;", "&lt;", "&gt;", "&quot;", "&apos;"})
        if (rest.substr(0, known.size()) == known) return true;
    return false;
}

// Walks through a text and keeps line and column.
class Walker {
public:
    Walker(std::string_view its_text, Source start) : text(its_text), at(start) {}

    Source place() const { return at; }
    size_t offset() const { return here; }
    bool ended() const { return here >= text.size(); }
    char letter() const { return ended() ? '\0' : text[here]; }

    void step()
    {
        const size_t length = std::max<size_t>(utf8_length(text, here), 1);
        if (text[here] == '\n') {
            at.line++;
            at.column = 0;
        }
        at.column++;
        here += length;
    }
    template <class Stop> void until(const Stop &stop)
    {
        while (!ended() && !stop(letter())) step();
    }

private:
    std::string_view text;
    size_t here = 0;
    Source at;
};

class Parser {
public:
    Parser(int its_file, std::string_view its_bytes, Faults &all)
        : file(its_file), bytes(its_bytes), faults(all), expat(XML_ParserCreate(nullptr))
    {
        if (!expat) throw std::bad_alloc();
        XML_SetUserData(expat.get(), this);
        XML_SetElementHandler(expat.get(), on_start, on_end);
        XML_SetCharacterDataHandler(expat.get(), on_text);
        XML_SetEntityDeclHandler(expat.get(), on_entity);
        XML_SetSkippedEntityHandler(expat.get(), on_skipped);
        XML_SetUnknownEncodingHandler(expat.get(), on_encoding, nullptr);
        XML_SetParamEntityParsing(expat.get(), XML_PARAM_ENTITY_PARSING_NEVER);
    }

    bool run(XmlElement &document)
    {
        root = &document;
        const bool good = XML_Parse(expat.get(), bytes.data(), (int)bytes.size(), 1) == XML_STATUS_OK;
        if (thrown) std::rethrow_exception(thrown);
        if (good) return true;
        const XML_Error error = XML_GetErrorCode(expat.get());
        if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        if (error != XML_ERROR_ABORTED) add_error(error);
        return false;
    }

private:
    struct Free {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };
    using Handle = std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free>;

    // Exceptions may not pass through the library: they wait until it has returned.
    template <class Work> static void guarded(void *self, const Work &work)
    {
        Parser &parser = *static_cast<Parser *>(self);
        if (parser.thrown || parser.stopped) return;
        try {
            work(parser);
        } catch (...) {
            parser.thrown = std::current_exception();
            XML_StopParser(parser.expat.get(), XML_FALSE);
        }
    }

    static void XMLCALL on_start(void *self, const XML_Char *name, const XML_Char **attributes)
    {
        guarded(self, [&](Parser &parser) { parser.start(name, attributes); });
    }
    static void XMLCALL on_end(void *self, const XML_Char *)
    {
        guarded(self, [](Parser &parser) { parser.open.pop_back(); });
    }
    static void XMLCALL on_text(void *self, const XML_Char *text, int size)
    {
        guarded(self, [&](Parser &parser) { parser.add_text({text, (size_t)size}); });
    }
    static void XMLCALL on_entity(void *self, const XML_Char *name, int, const XML_Char *, int, const XML_Char *,
                                  const XML_Char *, const XML_Char *, const XML_Char *)
    {
        guarded(self, [&](Parser &parser) {
            parser.stop(parser.here(), "the file declares the entity " + quote(name),
                        "write its text where it is used and remove the declaration");
        });
    }
    static void XMLCALL on_skipped(void *self, const XML_Char *name, int)
    {
        guarded(self, [&](Parser &parser) {
            parser.stop(parser.here(), "entity " + quote(name) + " is not expanded", "write its text in its place");
        });
    }

    // Encodings of a byte a character, as the system's library of them knows them.
    static int XMLCALL on_encoding(void *, const XML_Char *name, XML_Encoding *encoding)
    {
        const iconv_t known = iconv_open("UTF-32LE", name);
        if (reinterpret_cast<std::intptr_t>(known) == -1) return XML_STATUS_ERROR;
        for (int c = 0; c < 256; c++) {
            char byte = (char)c;
            unsigned char out[8] = {0};
            char *from = &byte, *to = reinterpret_cast<char *>(out);
            size_t left = 1, room = sizeof out;
            const bool good = iconv(known, &from, &left, &to, &room) != (size_t)-1 && room == sizeof out - 4;
            encoding->map[c] = good ? (int)(out[0] + 256u * out[1] + 65536u * out[2]) : -1;
            if (!good) iconv(known, nullptr, nullptr, nullptr, nullptr);
        }
        iconv_close(known);
        encoding->data = nullptr;
        encoding->convert = nullptr;
        encoding->release = nullptr;
        return XML_STATUS_OK;
    }

    Source here() const
    {
        return {file, (int)XML_GetCurrentLineNumber(expat.get()), (int)XML_GetCurrentColumnNumber(expat.get()) + 1};
    }

    void stop(Source at, const std::string &what, const std::string &remedy)
    {
        faults.add(at, what, remedy);
        stopped = true;
        XML_StopParser(expat.get(), XML_FALSE);
    }

    void add_error(XML_Error error)
    {
        const char *const words = XML_ErrorString(error);
        std::string remedy = "correct the XML here or just before";
        if (!open.empty())
            remedy += ", in " + quote(open.back()->name) + " of line " + std::to_string(open.back()->at.line);
        faults.add(here(), std::string("not XML: ") + (words ? words : "fault"), remedy);
    }

    void start(const XML_Char *name, const XML_Char **attributes)
    {
        if (open.size() >= deepest_xml) {
            stop(here(), "elements are nested deeper than " + std::to_string(deepest_xml), "no network needs that");
            return;
        }
        XmlElement *element = root;
        if (!open.empty()) element = &open.back()->children.emplace_back();
        element->name = name;
        element->at = here();
        open.push_back(element);
        for (const XML_Char **a = attributes; *a; a += 2) element->attributes.push_back({a[0], a[1], element->at});
        place_attributes(*element);
    }

    // The tag as it stands in the file tells where its values are, and what entities they use.
    void place_attributes(XmlElement &element)
    {
        const XML_Index begin = XML_GetCurrentByteIndex(expat.get());
        const int size = XML_GetCurrentByteCount(expat.get());
        if (begin < 0 || size <= 0 || (size_t)begin + (size_t)size > bytes.size()) return;
        const std::string_view tag = bytes.substr((size_t)begin, (size_t)size);
        Walker walker(tag, element.at);
        for (XmlAttribute &attribute : element.attributes) {
            walker.until([](char c) { return c == '"' || c == '\''; });
            if (walker.ended()) return; // a default of the document type
            const char mark = walker.letter();
            walker.step();
            attribute.at = walker.place();
            const size_t from = walker.offset();
            walker.until([mark](char c) { return c == mark; });
            check_value(attribute, tag.substr(from, walker.offset() - from));
            if (stopped) return;
            if (!walker.ended()) walker.step();
        }
    }

    void check_value(const XmlAttribute &attribute, std::string_view raw)
    {
        if (raw.size() > longest_xml_attribute)
            stop(attribute.at,
                 "attribute " + attribute.name + " is longer than " + std::to_string(longest_xml_attribute) + " bytes",
                 "no network needs that");
        for (size_t at = raw.find('&'); !stopped && at != std::string_view::npos; at = raw.find('&', at + 1))
            if (!is_plain_reference(raw, at))
                stop(attribute.at, "an entity in attribute " + attribute.name + " is not expanded",
                     "write its text in its place");
    }

    // Blanks between elements are not kept.
    void add_text(std::string_view text)
    {
        XmlElement &element = *open.back();
        if (element.text.empty() && is_blank(text)) return;
        element.marks.push_back({element.text.size(), here()});
        element.text += text;
    }

    int file;
    std::string_view bytes;
    Faults &faults;
    Handle expat;
    XmlElement *root = nullptr;
    std::vector<XmlElement *> open; // the elements around what is read
    std::exception_ptr thrown;
    bool stopped = false;
};

bool is_utf16(std::string_view text) { return text.substr(0, 2) == "\xFF\xFE" || text.substr(0, 2) == "\xFE\xFF"; }

} // namespace

bool xml_available() { return true; }

bool read_xml(const std::string &path, XmlElement &root, Faults &faults)
{
    const int file = faults.add_file(path);
    const Source whole = {file, 0, 0};
    std::string bytes;
    const bool read = read_pieces(path, whole, largest_xml, faults, [&bytes](const char *piece, size_t size) {
        bytes.append(piece, size);
        return true;
    });
    if (!read) return false;
    if (is_utf16(bytes)) {
        faults.add(whole, "text is UTF-16", "save it as UTF-8");
        return false;
    }
    root = XmlElement();
    return Parser(file, bytes, faults).run(root);
}

#else

bool xml_available() { return false; }

bool read_xml(const std::string &path, XmlElement &, Faults &faults)
{
    const int file = faults.add_file(path);
    faults.add({file, 0, 0}, "this program was built without a parser of XML", "build it with expat");
    return false;
}

#endif

} // namespace vornhost
