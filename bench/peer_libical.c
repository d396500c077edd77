/* To-dos with libical alone: the work of ulotask's verbs on one iCalendar file. Built and run by
   bench/peers.
     peer_libical import FILE.vcs | list FILE | export FILE | search FILE TEXT | add FILE */

#include <libical/ical.h>
#include <libical/vcc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char* read_file(const char* name) {
  FILE* file = fopen(name, "rb");
  char* text = NULL;
  long size = 0;
  if (file == NULL)
    return NULL;
  if (fseek(file, 0, SEEK_END) == 0 && (size = ftell(file)) >= 0 &&
      (text = malloc((size_t)size + 1)) != NULL) {
    rewind(file);
    text[fread(text, 1, (size_t)size, file)] = '\0';
  }
  fclose(file);
  return text;
}

static int write_file(const char* name, icalcomponent* calendar) {
  char* text = icalcomponent_as_ical_string_r(calendar);
  FILE* file = fopen(name, "wb");
  int good = file != NULL && fputs(text, file) >= 0;
  if (file != NULL && fclose(file) != 0)
    good = 0;
  free(text);
  return good ? 0 : 1;
}

int main(int count, char** arguments) {
  if (count < 3)
    return 2;
  const char* verb = arguments[1];
  char* text = read_file(arguments[2]);
  if (text == NULL)
    return 1;
  if (strcmp(verb, "import") == 0) {
    VObject* read = Parse_MIME(text, strlen(text));
    return read != NULL ? 0 : 1;
  }
  icalcomponent* calendar = icalparser_parse_string(text);
  if (calendar == NULL)
    return 1;
  if (strcmp(verb, "export") == 0) {
    char* written = icalcomponent_as_ical_string_r(calendar);
    puts(written);
    free(written);
    return 0;
  }
  if (strcmp(verb, "add") == 0) {
    icalcomponent* todo = icalcomponent_new(ICAL_VTODO_COMPONENT);
    icalcomponent_set_summary(todo, "Buy milk");
    icalcomponent_add_component(calendar, todo);
    return write_file(arguments[2], calendar);
  }
  const int searches = strcmp(verb, "search") == 0 && count > 3;
  if (!searches && strcmp(verb, "list") != 0)
    return 2;
  for (icalcomponent* todo = icalcomponent_get_first_component(calendar, ICAL_VTODO_COMPONENT);
       todo != NULL; todo = icalcomponent_get_next_component(calendar, ICAL_VTODO_COMPONENT)) {
    const char* summary = icalcomponent_get_summary(todo);
    const char* note = icalcomponent_get_description(todo);
    if (!searches || (summary != NULL && strstr(summary, arguments[3]) != NULL) ||
        (note != NULL && strstr(note, arguments[3]) != NULL))
      puts(summary != NULL ? summary : "");
  }
  return 0;
}
