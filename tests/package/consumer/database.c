/* A program that uses the database alone. */
#include <stdio.h>
#include <ulodb2.h>

int main(void) {
  const int code = DB_Open(1);
  if (code == DB_OK)
    DB_Close();
  printf("database: code %d\n", code);
  return code;
}
