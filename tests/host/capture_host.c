/* A C host that takes everything a script shows through the output
 * callbacks and reads and writes its variables, arrays included. Its whole
 * output is compared with capture_expected.txt. */
#include <orvobasic/orvobasic.h>

#include <stdio.h>
#include <string.h>

/* Prints one value as "type:text". */
static void ShowValue(const VARIANT* value) {
    switch (value->vt) {
    case VT_I4: printf("i4:%d", (int)value->lVal); break;
    case VT_R8: printf("r8:%g", value->dblVal); break;
    case VT_BOOL: printf("bool:%d", value->boolVal ? 1 : 0); break;
    case VT_BSTR: {
        printf("bstr:");
        for (uint32_t i = 0; i < SysStringLen(value->bstrVal); ++i) putchar(value->bstrVal[i] < 0x80 ? value->bstrVal[i] : '?');
        break;
    }
    case VT_EMPTY: printf("empty"); break;
    default: printf("vt %d", (int)value->vt); break;
    }
}

static void ShowVariable(OB_HANDLE script, const char* name, int32_t index) {
    VARIANT value;
    VariantInit(&value);
    int32_t found = OB_GetVariableUtf8(script, name, index, &value);
    printf("get %s[%d] -> %d ", name, (int)index, (int)found);
    ShowValue(&value);
    printf("\n");
    VariantClear(&value);
}

static void OnPrint(OB_HANDLE script, const char* text, int32_t length, void* userData) {
    (void)script;
    printf("%s print (%d bytes): %s", (const char*)userData, (int)length, text);
}

static int32_t OnMessageBox(OB_HANDLE script, const char* text, uint32_t style, void* userData) {
    (void)script;
    (void)userData;
    printf("box %u: %s\n", (unsigned)style, text);
    return OB_IDOK;
}

static int32_t OnError(OB_HANDLE script, const OB_ErrorInfo* error, void* userData) {
    (void)script;
    (void)userData;
    printf("error %d at line %d: %s | %s\n", (int)error->id, (int)error->line, error->message, error->sourceLine);
    return OB_CONTINUE;
}

/* hostpeek(): reads the calling function's local and a main-program
 * variable a function cannot see. */
static void HostPeek(OB_HANDLE script, const VARIANT* args, int32_t count, VARIANT* result, void* userData) {
    (void)args;
    (void)count;
    (void)result;
    (void)userData;
    ShowVariable(script, "inside", -1);
    ShowVariable(script, "squares", 0);
}

static VARIANT Number(int32_t n) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_I4;
    v.lVal = n;
    return v;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s SCRIPT\n", argv[0]);
        return 64;
    }
    /* Set once for every script made from now on. */
    OB_OutputHandlers handlers = {OnPrint, OnMessageBox, "[capture]"};
    OB_SetOutputHandlers(NULL, &handlers);
    OB_SetErrorHandler(NULL, OnError, NULL);
    OB_AddCustomFunctionUtf8("hostpeek", HostPeek, 0, NULL);

    OB_HANDLE script = OB_CreateScript();
    VARIANT greeting;
    VariantInit(&greeting);
    greeting.vt = VT_BSTR;
    greeting.bstrVal = SysAllocString(u"from C");
    printf("set greeting -> %d\n", (int)OB_SetVariableUtf8(script, "greeting", -1, &greeting));
    VariantClear(&greeting);
    if (!OB_RunScriptUtf8(script, argv[1])) {
        fprintf(stderr, "cannot load %s\n", argv[1]);
        return 2;
    }

    /* The array, element by element, then one element written. */
    int32_t size = OB_GetVariableSizeUtf8(script, "squares");
    printf("size of squares: %d\n", (int)size);
    for (int32_t i = 0; i < size; ++i) ShowVariable(script, "squares", i);
    VARIANT forty = Number(40);
    printf("set squares[2] -> %d\n", (int)OB_SetVariableUtf8(script, "squares", 2, &forty));
    printf("set squares[4] -> %d\n", (int)OB_SetVariableUtf8(script, "squares", 4, &forty));
    ShowVariable(script, "SQUARES", 2);
    ShowVariable(script, "squares", 4);

    /* A global is found by its exact spelling only. */
    ShowVariable(script, "Counter", -1);
    ShowVariable(script, "counter", -1);
    VARIANT five = Number(5);
    printf("set Counter -> %d\n", (int)OB_SetVariableUtf8(script, "Counter", -1, &five));

    VARIANT arg = Number(21);
    OB_SendEventUtf8(script, "Peek", &arg, 1);

    char text[256];
    OB_GetLastErrorUtf8(script, text, sizeof text);
    printf("last error: %s\n", text);
    OB_FreeScript(script);
    return 0;
}
