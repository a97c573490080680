"""The compiler rejects mistakes in the description of a class derived from znsl::Struct, with a message
that names the mistake."""

import os
import subprocess
import unittest

COMPILER = [os.environ['ZN_CXX'], '-std=c++17', '-fsyntax-only', '-Wall', '-Wextra', '-Wpedantic',
            '-Wconversion', '-Wshadow', '-Werror', '-x', 'c++', '-',
            '-I', os.path.join(os.environ['ZN_SOURCES'], 'libraries/src')]

PROGRAM = '''
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Set.h"
#include "streams/znsl_Struct.h"

class Place : public znsl::Struct<%(base)s> {
public:
    zntl::Integer floor = 0;
    zntl::String name;
    zntl::String const fixed = "";
    int number = 0;

    bool operator<(Place const& other) const { return name < other.name; }
    zntl::String rename() const { return name; }

    static constexpr auto schema = znsl::schema(%(id)s, %(type)s, %(members)s);
};

int main() {
    %(use)s
}
'''

GOOD = {
    'base': 'Place',
    'id': '2001',
    'type': '"Place"',
    'members': 'znsl::member(&Place::floor, "floor"), znsl::member(&Place::name, "name")',
    'use': 'Place place; return place.getBinLength() == 9;',
}

USE_SET = 'znsl::Set<Place> places; return places.empty();'


def compile_with(**changes):
    """Returns the compiler's messages; an empty string if the program compiles."""
    done = subprocess.run(COMPILER, input=PROGRAM % (GOOD | changes), timeout=120, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding='utf-8')
    assert (done.returncode == 0) == (done.stdout == ''), done.stdout
    return done.stdout


def members(*listed):
    return ', '.join(f'znsl::{member}' for member in listed)


class Mistakes(unittest.TestCase):

    def assert_compiles(self, **changes):
        self.assertEqual(compile_with(**changes), '', changes)

    def assert_error(self, message, **changes):
        self.assertIn(message, compile_with(**changes), changes)

    def test_are_absent_from_a_right_class(self):
        self.assert_compiles()
        self.assert_compiles(use=USE_SET)

    def test_in_type_ids(self):
        self.assert_compiles(id='65535')
        self.assert_error('a type id is at most 65535', id='65536')
        self.assert_error('this type id belongs to a class of the library', id='815')

    def test_in_type_ids_of_elements_of_sets(self):
        self.assert_compiles(use=USE_SET, id='55535')
        self.assert_error("the type id of a znsl::Set's elements is at most 55535",
                          use=USE_SET, id='55536')

    def test_in_names(self):
        self.assert_error("a member's name cannot be the name of an XML element",
                          members=members('member(&Place::floor, "a b")'))
        self.assert_error('the type name cannot be the name of an XML element', type='"A Place"')

    def test_in_a_name_used_twice(self):
        self.assert_error('two members have the same name', members=members(
            'member(&Place::floor, "same")', 'member(&Place::name, "same")'))
        self.assert_error('two members have the same name', members=members(
            'xmlMember(&Place::floor, "same")', 'member(&Place::name, "same")'))
        self.assert_compiles(members=members(
            'member(&Place::floor, "same")', 'member(&Place::name, "samee")'))

    def test_in_a_member_listed_twice(self):
        self.assert_error('a member is listed twice', members=members(
            'member(&Place::name, "a")', 'member(&Place::floor)', 'xmlMember(&Place::name, "b")'))
        self.assert_compiles(members=members('member(&Place::floor)', 'member(&Place::name)'))

    def test_in_the_type_of_a_member(self):
        for wrong in ('&Place::number', '&Place::fixed', '&Place::rename'):
            self.assert_error('a member of a znsl::Struct is a znsl::Serializable that is not const',
                              members=members(f'member({wrong})'))

    def test_in_the_class_that_is_named(self):
        other = '''struct Other : znsl::Struct<Place> {};
            Other other; return other.getBinLength() == 9;'''
        self.assertRegex(compile_with(use=other), 'private|inaccessible')


if __name__ == '__main__':
    unittest.main()
