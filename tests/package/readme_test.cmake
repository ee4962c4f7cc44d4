# The README shows the quick start as it is built and run.
file(READ ${source_dir}/README.md readme)
file(READ ${source_dir}/examples/quick_start.cpp program)
string(FIND "${readme}" "```cpp\n${program}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "README.md does not show examples/quick_start.cpp verbatim")
endif()
