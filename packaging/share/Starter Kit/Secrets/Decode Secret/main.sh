#!/bin/sh
# Shows the values of the chosen secret. In a terminal, so that they stay out of the console's history.
trap 'exit 1' INT TERM
trap 'printf "\033[H\033[2J\033[3J"' EXIT # clears the screen, with what has scrolled away
if values=$("$KUBECTL" get "secret/$SECRET" --context="$CONTEXT" --namespace="$NAMESPACE" --output=go-template='{{
        range $key, $value := .data}}{{$key}}: {{$value | base64decode}}
{{end}}')
then
    # What would command the terminal is shown as "?".
    printf '%s\n' "$values" | LC_ALL=C tr '\000-\010\013-\037\177' '?' | LC_ALL=C sed 's/\xc2[\x80-\x9f]/?/g'
    echo "Press Return to clear the screen."
    read -r _
else
    trap - EXIT # what kubectl says stays
fi
