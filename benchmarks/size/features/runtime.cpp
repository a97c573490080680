// The layer below the library: strings, allocation and exceptions of the C++ runtime.

#include <stdexcept>
#include <string>

int main(int count, char** arguments) {
    try {
        std::string text(arguments[0]);
        for (int i = 0; i < count; ++i)
            text += text;
        return static_cast<int>(std::string(text, 1).size());
    } catch (std::exception const&) {
        return 1;
    }
}
