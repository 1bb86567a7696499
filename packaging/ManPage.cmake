# Writes the man page `page`: the file `head`, and behind it the manual `text` as the program `lowdown` sets it, without
# its title and with its sections as the page's own.

file(READ "${text}" manual)
string(REGEX REPLACE "^# [^\n]*\n" "" manual "${manual}")
string(REGEX REPLACE "\n## " "\n# " manual "${manual}")
file(WRITE "${page}.md" "${manual}")
execute_process(COMMAND "${lowdown}" -Tman --out-no-smarty "${page}.md"
  OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
file(READ "${head}" first)
file(WRITE "${page}" "'\\\" t\n${first}${body}") # the first line asks for tables
