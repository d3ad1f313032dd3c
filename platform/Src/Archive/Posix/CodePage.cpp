#include "../CodePage.h"

#include <iconv.h>

namespace Archive {

bool convertBySystem(std::string_view text, unsigned codePage, std::string& utf8) {
    const iconv_t converter = iconv_open("UTF-8", ("CP" + std::to_string(codePage)).c_str());
    if (converter == iconv_t(-1)) return false;
    std::string output(text.size() * 4, '\0');
    std::string input(text);
    char* from = input.data();
    char* to = output.data();
    size_t fromLeft = input.size(), toLeft = output.size();
    const bool converted = iconv(converter, &from, &fromLeft, &to, &toLeft) != size_t(-1) && fromLeft == 0;
    iconv_close(converter);
    if (converted) utf8.assign(output, 0, output.size() - toLeft);
    return converted;
}

}  // namespace Archive
