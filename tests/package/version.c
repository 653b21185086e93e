/* A program in C that knows the package alone: the library is there and is that of the header. */

#include <ovix.h>
#include <stdio.h>

int main(void) {
    ovix_error error = {sizeof error};
    ovix_source* source = NULL;
    puts(ovix_version());
    return ovix_open("nowhere", NULL, &source) != OVIX_FILE_MISSING || ovix_last_error(&error) || !error.line[0];
}
