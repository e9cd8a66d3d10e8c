#!/usr/bin/perl -p
# Doxygen input filter. The /// comments of this tree are plain text: the
# characters Doxygen would take for commands, HTML tags or links there
# (\ < > # @ & $ %) are escaped, code is passed as it is.
s{(///<?)(.*)}{my ($mark, $text) = ($1, $2); $text =~ s/([\\<>#@&\$%])/\\$1/g; $mark . $text}e;
