# An imported target for a library that is one header and one file, wherever the system's package
# manager keeps them: quil_find_library(utf8proc utf8proc.h) makes quil::utf8proc.
function(quil_find_library name header)
    find_path(${name}_INCLUDE_DIR ${header} REQUIRED)
    find_library(${name}_LIBRARY ${name} REQUIRED)
    mark_as_advanced(${name}_INCLUDE_DIR ${name}_LIBRARY)
    add_library(quil::${name} UNKNOWN IMPORTED GLOBAL)
    set_target_properties(quil::${name} PROPERTIES
        IMPORTED_LOCATION ${${name}_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${${name}_INCLUDE_DIR})
endfunction()
