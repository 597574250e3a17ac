/* A small C host for OrvoBasic: registers two host functions, runs a
 * resident script, sends it events with a number and a string, lets its
 * timer tick, reads the last error and frees it.
 *
 *   cc host.c $(pkg-config --cflags --libs orvobasic) -o host
 *   ./host resident.bas
 */
#include <orvobasic/orvobasic.h>

#include <stdio.h>
#include <string.h>

/* Prints UTF-16 text as UTF-8. */
static void PrintUtf16(const char16_t* text, uint32_t length) {
    for (uint32_t i = 0; i < length; ++i) {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < length && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000)
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        if (c < 0x80) {
            putchar((int)c);
        } else if (c < 0x800) {
            putchar((int)(0xC0 | (c >> 6)));
            putchar((int)(0x80 | (c & 0x3F)));
        } else if (c < 0x10000) {
            putchar((int)(0xE0 | (c >> 12)));
            putchar((int)(0x80 | ((c >> 6) & 0x3F)));
            putchar((int)(0x80 | (c & 0x3F)));
        } else {
            putchar((int)(0xF0 | (c >> 18)));
            putchar((int)(0x80 | ((c >> 12) & 0x3F)));
            putchar((int)(0x80 | ((c >> 6) & 0x3F)));
            putchar((int)(0x80 | (c & 0x3F)));
        }
    }
}

/* Prints one script value as the host received it. */
static void PrintValue(const VARIANT* value) {
    switch (value->vt) {
    case VT_I4: printf("%d", (int)value->lVal); break;
    case VT_R8: printf("%g", value->dblVal); break;
    case VT_BOOL: printf("%s", value->boolVal ? "true" : "false"); break;
    case VT_BSTR: PrintUtf16(value->bstrVal, SysStringLen(value->bstrVal)); break;
    default: printf("(unset)"); break;
    }
}

/* hostlog(a, b, ...): prints its arguments on one line, the first one
 * prefixed with the tag given at registration. */
static void HostLog(OB_HANDLE script, const VARIANT* args, int32_t count, VARIANT* result, void* userData) {
    (void)script;
    (void)result; /* left VT_EMPTY: the script gets an unset value */
    printf("%s", (const char*)userData);
    for (int32_t i = 0; i < count; ++i) {
        printf(i == 0 ? " " : ", ");
        PrintValue(&args[i]);
    }
    printf("\n");
    fflush(stdout);
}

/* hostgreeting(): returns a string; the library frees it. */
static void HostGreeting(OB_HANDLE script, const VARIANT* args, int32_t count, VARIANT* result,
                         void* userData) {
    (void)script;
    (void)args;
    (void)count;
    (void)userData;
    result->vt = VT_BSTR;
    result->bstrVal = SysAllocString(u"hello from C");
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s SCRIPT\n", argv[0]);
        return 64;
    }
    printf("interface version 0x%x\n", (unsigned)OB_Initialize());

    /* Host functions first: scripts find them by name, like built-ins. */
    OB_AddCustomFunctionUtf8("hostlog", HostLog, -1, "[script]");
    OB_AddCustomFunctionUtf8("hostgreeting", HostGreeting, 0, NULL);

    int32_t resident = 0;
    OB_HANDLE script = OB_ExecuteScriptFileUtf8(argv[1], &resident);
    if (!script) {
        fprintf(stderr, "cannot load %s\n", argv[1]);
        return 2;
    }
    printf("resident: %d\n", (int)resident);

    /* An event with a number and a string, to this script only. */
    VARIANT args[2];
    VariantInit(&args[0]);
    VariantInit(&args[1]);
    args[0].vt = VT_I4;
    args[0].lVal = 42;
    args[1].vt = VT_BSTR;
    args[1].bstrVal = SysAllocString(u"forty-two");
    OB_SendEventUtf8(script, "HostEvent", args, 2);
    VariantClear(&args[0]);
    VariantClear(&args[1]);

    /* Timers tick only while the host runs the message loop. */
    OB_RunMessageLoop(600);

    /* An event whose handler fails: the error text stays readable. */
    OB_SendEventUtf8(script, "Broken", NULL, 0);
    char error[256];
    OB_GetLastErrorUtf8(script, error, sizeof error);
    error[strcspn(error, "\n")] = '\0'; /* the message; the source line follows it */
    printf("last error: %s\n", error);

    OB_FreeScript(script);
    OB_Uninitialize();
    printf("done\n");
    return 0;
}
