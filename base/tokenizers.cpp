#include "base/tokenizers.h"

#include "base/logs.h"

#include <cstring>

void get_tokens1(char* read_buf, char* fields[], const char* token, int max_flds, int* totalFlds) {
    char* position = nullptr;
    int count = 0;
    for (char* field = strtok_r(read_buf, token, &position); field != nullptr && count < max_flds;
         field = strtok_r(nullptr, token, &position)) {
        fields[count++] = field;
    }
    *totalFlds = count;
    DEBUG_LOG(4, "get_tokens1", "Total fields found : %d", count);
}

void get_tokens12(char* read_buf, char* fields[], const char* token, int max_flds, int* totalFlds) {
    char* position = nullptr;
    int count = 0;
    while (count < max_flds) {
        char* field = strtok_r(count == 0 ? read_buf : nullptr, token, &position);
        if (field == nullptr) {
            break;
        }
        fields[count++] = field;
    }
    *totalFlds = count;
    DEBUG_LOG(4, "get_tokens12", "Total fields found : %d", count);
}
