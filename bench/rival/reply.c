#include "reply.h"

static int append_rows(sd_bus_message *reply, const char *type, sqlite3_stmt *selection,
                       append_row append)
{
    int result = sd_bus_message_open_container(reply, 'a', type);
    if (result < 0)
        return result;
    while ((result = append(reply, selection)) > 0)
        ;
    return result < 0 ? result : sd_bus_message_close_container(reply);
}

int reply_rows(sd_bus_message *call, const char *type, sqlite3_stmt *selection, append_row append)
{
    sd_bus_message *reply = NULL;
    int result = sd_bus_message_new_method_return(call, &reply);
    if (result >= 0)
        result = append_rows(reply, type, selection, append);
    sqlite3_reset(selection);
    if (result >= 0)
        result = sd_bus_send(NULL, reply, NULL);
    sd_bus_message_unref(reply);
    return result;
}
