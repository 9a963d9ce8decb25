// A user of the parent's library, who need not know what that one is made with.

#include <parent.h>

int main() {
    return CountDecodings() == 17 ? 0 : 1;
}
