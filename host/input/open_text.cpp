#include "host/input/open_text.h"

#include "host/input/toml_texts.h"

namespace vornhost {

std::optional<OpenText> find_open_text(std::string_view toml)
{
    for (size_t at = 0; const std::optional<TomlText> text = next_text(toml, at);) {
        const bool open = !text->closed || !key_before(toml, text->end).empty();
        if (text->marks.size() == 3 && open)
            return OpenText{text->opening, std::string(key_before(toml, text->opening)), std::string(text->marks)};
        at = text->past;
    }
    return std::nullopt;
}

} // namespace vornhost
