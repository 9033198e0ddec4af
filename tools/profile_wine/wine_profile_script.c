/* Applies a script of profile operations with the Windows profile functions
 * (WritePrivateProfileStringA, GetPrivateProfileStringA); built with mingw, run under Wine.
 *   wine_profile_script SCRIPT FOLDER RESULTS
 * SCRIPT lines, every text field "x" + hex bytes, or "-" for a null pointer:
 *   S NAME                 the operations that follow work on FOLDER\NAME
 *   W SECTION KEY VALUE    a write; a null value deletes the key, a null key the section
 *   R SECTION KEY DEFAULT SIZE   a read into a buffer of SIZE characters
 * RESULTS gets one line per operation: "S NAME", "w 0|1", "r x<hex of what was read>". */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

static char *unhex(const char *field) {
    if (!field || strcmp(field, "-") == 0) return NULL;
    size_t n = strlen(field + 1) / 2;
    char *text = malloc(n + 1);
    for (size_t i = 0; i < n; ++i) {
        unsigned byte = 0;
        sscanf(field + 1 + 2 * i, "%2x", &byte);
        text[i] = (char)byte;
    }
    text[n] = 0;
    return text;
}

int main(int argc, char **argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: %s SCRIPT FOLDER RESULTS\n", argv[0]);
        return 2;
    }
    FILE *in = fopen(argv[1], "rb"), *out = fopen(argv[3], "wb");
    if (!in || !out) return 2;
    static char line[1 << 16];
    char path[MAX_PATH * 2] = "";
    while (fgets(line, sizeof line, in)) {
        line[strcspn(line, "\r\n")] = 0;
        char *op = strtok(line, " "), *a = strtok(NULL, " "), *b = strtok(NULL, " ");
        char *c = strtok(NULL, " "), *d = strtok(NULL, " ");
        if (!op) continue;
        if (op[0] == 'S') {
            snprintf(path, sizeof path, "%s\\%s", argv[2], a);
            fprintf(out, "S %s\n", a);
        } else if (op[0] == 'W') {
            char *section = unhex(a), *key = unhex(b), *value = unhex(c);
            BOOL ok = WritePrivateProfileStringA(section, key, value, path);
            fprintf(out, "w %d\n", ok ? 1 : 0);
            free(section), free(key), free(value);
        } else if (op[0] == 'R') {
            char *section = unhex(a), *key = unhex(b), *def = unhex(c);
            DWORD size = (DWORD)atoi(d);
            char *buffer = calloc(size + 1, 1);
            GetPrivateProfileStringA(section, key, def, buffer, size, path);
            fprintf(out, "r x");
            for (const char *p = buffer; *p; ++p) fprintf(out, "%02x", (unsigned char)*p);
            fprintf(out, "\n");
            free(section), free(key), free(def), free(buffer);
        }
    }
    fclose(out);
    fclose(in);
    return 0;
}
