# Fails unless the README shows each example file whole, as a ```cpp block,
# so that the code the README teaches is the code CTest builds and runs.
#   -DREADME=path -DEXAMPLES=a.cpp;b.cpp
file(READ "${README}" readme)
foreach(example ${EXAMPLES})
  file(READ "${example}" code)
  string(FIND "${readme}" "```cpp\n${code}```\n" at)
  if(at EQUAL -1)
    get_filename_component(name "${example}" NAME)
    message(FATAL_ERROR "${README} does not show ${name} as it is (a ```cpp block of the whole file)")
  endif()
endforeach()
