-- Locators and texts of WhatsApp Web as shipped. The page changes often: the element screen edits these rows.
-- Locators hold no double quote, since the element screen stores its values between double quotes.

INSERT INTO element VALUES ('XX_InvalidNumber', '//*[@data-testid=''confirm-popup'' or @role=''dialog''][contains(.,''on WhatsApp'') or contains(.,''url is invalid'')]');
INSERT INTO element VALUES ('XX_NewChat', '//*[@data-icon=''new-chat-outline'' or @data-testid=''new-chat-outline'']');
INSERT INTO element VALUES ('XX_ChatBox', '//*[@id=''main'']//footer//div[@contenteditable=''true'']');
INSERT INTO element VALUES ('XX_To', '(//*[@id=''main'']//header//span[@dir=''auto''])[1]');
INSERT INTO element VALUES ('XX_PP', '//*[@id=''main'']//header//img');
INSERT INTO element VALUES ('XX_QR', '//div[@data-ref]');
INSERT INTO element VALUES ('XX_QRReload', '//*[@data-ref]//button');
INSERT INTO element VALUES ('XX_Info', '//*[@data-testid=''chat-butterbar'']');
INSERT INTO element VALUES ('XX_ReadMessage', '//*[@id=''pane-side'']//*[@role=''row'' or @role=''listitem''][not(ancestor::*[@role=''row'' or @role=''listitem''])]');
INSERT INTO element VALUES ('XX_Update', '//*[@data-testid=''chat-butterbar'']//button[contains(.,''Refresh'')]');
INSERT INTO element VALUES ('XX_SendFileButton', '(//div[@role=''button''][starts-with(@aria-label,''Send'')][.//*[@data-icon=''wds-ic-send-filled'' or @data-testid=''wds-ic-send-filled'']])[last()]');
INSERT INTO element VALUES ('XX_SendButton', '//*[@id=''main'']//footer//*[@data-icon=''wds-ic-send-filled'' or @data-testid=''wds-ic-send-filled'' or @data-icon=''send'']/ancestor-or-self::*[self::button or @role=''button''][1]');

-- Texts searched in the page: several patterns, separated by a bar, with * for any characters.
INSERT INTO element VALUES ('XXInfo1', 'Phone not connected*|*Trying to reach phone*');
INSERT INTO element VALUES ('XXInfo2', 'Computer not connected*|*No internet*|Connecting*');
INSERT INTO element VALUES ('XXInfo3', 'Phone number shared via url is invalid.*|*isn''t on WhatsApp*|*isn’t on WhatsApp*');
INSERT INTO element VALUES ('XXTyping', 'typing');
INSERT INTO element VALUES ('XXDraft', 'Draft:');

-- Further places of the page that the sender and the inbox reader use.
INSERT INTO element VALUES ('XX_OwnPicture', '//*[@data-testid=''navbar-item-profile-photo'']//img');
INSERT INTO element VALUES ('XX_ChatList', '//*[@id=''pane-side'']');
INSERT INTO element VALUES ('XX_Conversation', '//*[@id=''main'']');
INSERT INTO element VALUES ('XX_HeaderPicture', '//*[@id=''main'']//header//img');
INSERT INTO element VALUES ('XX_MessageRow', '//*[@id=''main'']//*[@data-id]');
INSERT INTO element VALUES ('XX_MessageText', './/span[contains(concat('' '', @class, '' ''), '' selectable-text '')]');
INSERT INTO element VALUES ('XX_AttachMenu', '//*[@id=''main'']//footer//*[@data-testid=''plus-rounded'' or @data-icon=''plus-rounded'' or @data-icon=''attach-menu-plus'']/ancestor-or-self::*[self::button or @role=''button'' or self::span][1]');
INSERT INTO element VALUES ('XX_MediaInput', '//input[@type=''file''][contains(@accept,''image/'') and contains(@accept,''video/'')]');
INSERT INTO element VALUES ('XX_DocumentInput', '//input[@type=''file''][@accept=''*'' or not(@accept)]');
INSERT INTO element VALUES ('XX_Caption', '//*[@data-testid=''media-caption-input-container'']/descendant-or-self::*[@contenteditable=''true''] | //*[@contenteditable=''true''][@data-tab=''10'' or @data-tab=''11''][not(ancestor::footer)]');
INSERT INTO element VALUES ('XX_SearchBox', '//*[@id=''side'']//*[self::input or @contenteditable=''true''][@data-tab=''3'']');
INSERT INTO element VALUES ('XX_MessageResults', '//*[@id=''pane-side'']//*[not(*)][translate(normalize-space(.),''MESAG'',''mesag'')=''messages''][not(ancestor::*[@role=''row'' or @role=''listitem''][.//span[@title]])]');
INSERT INTO element VALUES ('XX_UseHere', '(//*[@data-testid=''confirm-popup'' or @role=''dialog'']//*[self::button or @role=''button''][contains(.,''Use here'') or contains(.,''Use Here'')])[1]');
INSERT INTO element VALUES ('XX_ErrorPage', '//*[@id=''main-frame-error''] | //h1[contains(.,''Server Error'') or contains(.,''Bad Gateway'') or contains(.,''Service Unavailable'') or contains(.,''Gateway Time'') or contains(.,''Not Found'')] | //h1[contains(.,''works with'')][contains(.,''Chrome'')]');
INSERT INTO element VALUES ('XX_EntryTitle', './/span[@title]');
INSERT INTO element VALUES ('XX_UnreadBadge', './/*[@data-testid=''icon-unread-count'' or contains(@aria-label,''unread'')]');
