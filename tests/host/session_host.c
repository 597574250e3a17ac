/* A C host that publishes a receiver in the session registry and runs a
 * script that finds it by title and sends it text. The callback runs on
 * the registry thread; it prints what it got (UTF-8) and answers. The
 * session directory is a fresh private one, so no other window is seen. */
#include <orvobasic/orvobasic.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static intptr_t Received(void* user, intptr_t sender, uint32_t code, const char* textUtf8) {
    printf("%s got code %u from %ld: %s (%zu bytes)\n", (const char*)user, (unsigned)code, (long)sender, textUtf8,
           strlen(textUtf8));
    fflush(stdout);
    return (intptr_t)code * 100 + (intptr_t)strlen(textUtf8);
}

static void OnPrint(OB_HANDLE script, const char* text, int32_t length, void* userData) {
    (void)script;
    (void)length;
    (void)userData;
    printf("script: %s", text);
    fflush(stdout);
}

static int32_t OnError(OB_HANDLE script, const OB_ErrorInfo* error, void* userData) {
    (void)script;
    (void)userData;
    printf("error %d at line %d\n", (int)error->id, (int)error->line);
    return OB_CONTINUE;
}

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    char dir[] = "/tmp/ob-session-host-XXXXXX";
    if (!mkdtemp(dir) || setenv("XDG_RUNTIME_DIR", dir, 1) != 0) return 2;
    OB_OutputHandlers handlers = {OnPrint, NULL, NULL};
    OB_SetOutputHandlers(NULL, &handlers);
    OB_SetErrorHandler(NULL, OnError, NULL);

    intptr_t window = OB_PublishWindow("Host receiver window", Received, "receiver");
    printf("published: %d\n", window != 0);
    printf("null callback: %ld\n", (long)OB_PublishWindow("x", NULL, NULL));

    OB_HANDLE script = OB_CreateScript();
    int32_t ran = OB_RunScriptUtf8(script, argv[1]);
    printf("ran: %d\n", (int)ran);
    OB_FreeScript(script);

    int32_t first = OB_UnpublishWindow(window);
    int32_t again = OB_UnpublishWindow(window);
    printf("unpublished: %d, again: %d\n", (int)first, (int)again);
    char socketDir[sizeof dir + 16];
    snprintf(socketDir, sizeof socketDir, "%s/orvobasic", dir);
    /* Nothing is left behind: the directories go only when empty. */
    printf("cleaned: %d\n", rmdir(socketDir) == 0 && rmdir(dir) == 0);
    return 0;
}
